import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// A name that the user added to those that are skipped.
RowLayout {
    id: row

    required property string name
    required property int index
    readonly property alias hasKeyboard: button.activeFocus

    width: parent ? parent.width : 0
    spacing: 8

    function takeKeyboard() {
        button.forceActiveFocus(Qt.TabFocusReason)
    }

    AppText {
        Layout.fillWidth: true
        text: row.name
        font.pixelSize: DITTheme.subheadline
    }
    DestructiveButton {
        id: button
        objectName: "remove:" + row.name
        Layout.preferredHeight: DITTheme.smallControlHeight
        text: L10n.remove
        Accessible.name: text + " " + row.name
        onClicked: (row.parent as ChoiceFlow).tap(row.name, row)
    }
}
