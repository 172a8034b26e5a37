import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// Names to choose from, with a field for a new one: the chips of a crew or of a unit.
ColumnLayout {
    id: choice

    required property var l10n
    property string title
    property alias entries: strip.entries
    property alias isChosen: strip.isChosen
    property color hue
    property string placeholder
    property string newName

    signal tapped(var entry)
    signal newNameEdited(string name)
    signal addRequested()
    signal deleteRequested()

    spacing: 8

    function resignFocus() {
        field.focus = false
    }

    AppText {
        Layout.fillWidth: true
        objectName: "title"
        text: choice.title
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.Medium
        Accessible.role: Accessible.Heading
    }
    RowLayout {
        Layout.fillWidth: true
        spacing: 8

        ChipStrip {
            id: strip
            objectName: "chips"
            Layout.fillWidth: true
            Layout.margins: -ringWidth
            entries: []
            hue: choice.hue
            onTapped: entry => {
                choice.resignFocus()
                choice.tapped(entry)
            }
        }
        NameField {
            id: field
            objectName: "field"
            Layout.preferredWidth: 240
            placeholderText: choice.placeholder
            text: choice.newName
            onTextEdited: choice.newNameEdited(text)
            onAccepted: choice.addRequested()
        }
        ActionButton {
            objectName: "new"
            text: choice.l10n.newButton
            onClicked: choice.addRequested()
        }
        DestructiveButton {
            objectName: "delete"
            text: choice.l10n.deleteButton
            onClicked: choice.deleteRequested()
        }
    }
}
