import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// Which crew and which unit a card belongs to.
Panel {
    id: picker

    required property UnitPicker picking
    // No room for explanations.
    property bool compact: false
    readonly property int inset: compact ? 8 : 14

    implicitHeight: blocks.implicitHeight + 2 * inset

    // Takes the keyboard away from both name fields and hands it back to the window.
    function resignNameFieldFocus() {
        crews.resignFocus()
        units.resignFocus()
    }

    ColumnLayout {
        id: blocks
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: picker.inset }
        spacing: picker.compact ? 8 : 16

        NamedChoice {
            id: crews
            objectName: "crews"
            Layout.fillWidth: true
            title: L10n.setLabel
            hue: DITTheme.ekip
            choices: picker.picking.crews
            placeholder: L10n.setNamePlaceholder
            newName: picker.picking.newCrewName
            canDelete: picker.picking.canDeleteCrew
            onNewNameEdited: picker.picking.newCrewName = crews.typedName
            onTapped: {
                units.resignFocus()
                picker.picking.tapCrew(crews.tappedValue)
            }
            onAddRequested: picker.picking.addCrew()
            onDeleteRequested: picker.picking.deleteCrew()
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 8

            NamedChoice {
                id: units
                objectName: "units"
                Layout.fillWidth: true
                title: picker.picking.title
                hue: DITTheme.unit
                choices: picker.picking.units
                placeholder: L10n.unitNamePlaceholder
                newName: picker.picking.newUnitName
                needsName: true
                canDelete: picker.picking.canDeleteUnit
                onNewNameEdited: picker.picking.newUnitName = units.typedName
                onTapped: {
                    crews.resignFocus()
                    picker.picking.tapUnit(units.tappedValue)
                }
                onAddRequested: picker.picking.addUnit()
                onDeleteRequested: picker.picking.deleteUnit()
            }
            AppText {
                objectName: "unitsHint"
                Layout.fillWidth: true
                visible: !picker.compact
                text: L10n.addUnitsHint
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
            AppText {
                Layout.fillWidth: true
                Layout.topMargin: -4
                visible: !picker.compact
                text: L10n.unitUsedInPath
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
        }
    }
}
