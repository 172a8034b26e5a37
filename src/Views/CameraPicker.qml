import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// Which crew and which unit a card belongs to.
Panel {
    id: picker

    required property var appModel
    required property var l10n

    implicitHeight: blocks.implicitHeight + 2 * 14

    // Takes the keyboard away from both name fields and hands it back to the window.
    function resignNameFieldFocus() {
        sets.resignFocus()
        units.resignFocus()
    }

    ColumnLayout {
        id: blocks
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 16

        NamedChoice {
            id: sets
            objectName: "sets"
            Layout.fillWidth: true
            l10n: picker.l10n
            title: picker.l10n.setLabel
            hue: DITTheme.ekip
            entries: picker.appModel.sets
            isChosen: entry => entry.selected === true
            placeholder: picker.l10n.setNamePlaceholder
            newName: picker.appModel.newSetName
            onNewNameEdited: name => picker.appModel.newSetName = name
            onTapped: entry => {
                units.resignFocus()
                picker.appModel.tapSet(entry.id)
            }
            onAddRequested: picker.appModel.addSetFromField()
            onDeleteRequested: picker.appModel.deleteSelectedSet()
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 8

            NamedChoice {
                id: units
                objectName: "units"
                Layout.fillWidth: true
                l10n: picker.l10n
                title: picker.appModel.unitTitle
                hue: DITTheme.unit
                entries: picker.appModel.units
                isChosen: entry => entry.active === true
                placeholder: picker.l10n.unitNamePlaceholder
                newName: picker.appModel.newUnitName
                onNewNameEdited: name => picker.appModel.newUnitName = name
                onTapped: entry => {
                    sets.resignFocus()
                    picker.appModel.tapUnit(entry.name)
                }
                onAddRequested: picker.appModel.addUnitFromField()
                onDeleteRequested: picker.appModel.deleteSelectedUnit()
            }
            AppText {
                Layout.fillWidth: true
                text: picker.l10n.addUnitsHint
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
            AppText {
                Layout.fillWidth: true
                Layout.topMargin: -4
                text: picker.l10n.unitUsedInPath
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
        }
    }
}
