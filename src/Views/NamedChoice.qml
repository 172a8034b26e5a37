import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// Names to choose from, with a field for a new one: the chips of a crew or of a unit.
ColumnLayout {
    id: choice

    property string title
    required property ChoiceListModel choices
    property color hue
    property string placeholder
    property string newName
    // Without one a name is made up.
    property bool needsName: false
    property bool canDelete: true
    readonly property alias typedName: field.text
    readonly property alias tappedValue: strip.tappedValue

    signal tapped()
    signal newNameEdited()
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
            choices: choice.choices
            hue: choice.hue
            onTapped: {
                choice.resignFocus()
                choice.tapped()
            }
        }
        NameField {
            id: field
            objectName: "field"
            Layout.preferredWidth: choice.width < 800 ? 140 : 240
            placeholderText: choice.placeholder
            text: choice.newName
            onTextEdited: choice.newNameEdited()
            onAccepted: choice.addRequested()
        }
        ActionButton {
            objectName: "new"
            // One that is under the keyboard stays there.
            enabled: !choice.needsName || choice.newName.trim().length > 0 || activeFocus
            text: L10n.newButton
            onClicked: choice.addRequested()
        }
        DestructiveButton {
            objectName: "delete"
            enabled: choice.canDelete || activeFocus
            text: L10n.deleteButton
            onClicked: choice.deleteRequested()
        }
    }
}
