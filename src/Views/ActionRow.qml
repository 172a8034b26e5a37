import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The settings, and the one button that matters.
RowLayout {
    id: row

    required property var appModel
    required property var l10n

    spacing: 8

    ActionButton {
        objectName: "advanced"
        Layout.preferredHeight: 40
        text: row.l10n.advanced
        onClicked: row.appModel.isAdvancedPresented = true
    }
    Item {
        Layout.fillWidth: true
    }
    ActionButton {
        objectName: "stop"
        Layout.preferredHeight: 40
        Layout.preferredWidth: Math.max(160, implicitWidth)
        visible: row.appModel.isBusy
        kind: ActionButton.Destructive
        font.pixelSize: DITTheme.headline
        text: row.l10n.stop
        onClicked: row.appModel.cancelCopy()
    }
    ActionButton {
        objectName: "copy"
        Layout.preferredHeight: 40
        Layout.preferredWidth: Math.max(160, implicitWidth)
        visible: !row.appModel.isBusy
        enabled: row.appModel.canCopy
        kind: ActionButton.Prominent
        font.pixelSize: DITTheme.headline
        text: row.l10n.copy
        onClicked: row.appModel.startCopy()
    }
}
