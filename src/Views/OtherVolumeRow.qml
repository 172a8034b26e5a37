import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// A volume, and the two lists that it can go to.
RowLayout {
    id: row

    required property string volumeID
    required property string name
    required property string detail
    required property bool isCard
    required property bool isDestination
    required property bool canBeDestination

    readonly property VolumeRows rows: parent as VolumeRows

    width: parent ? parent.width : 0
    spacing: 8

    Column {
        Layout.fillWidth: true
        Layout.minimumWidth: 80
        Layout.preferredWidth: 80
        spacing: 3

        AppText {
            width: parent.width
            text: row.name
            font.weight: Font.Medium
        }
        AppText {
            width: parent.width
            text: row.detail
            font.pixelSize: DITTheme.caption
            color: DITTheme.secondary
            elide: Text.ElideMiddle
        }
    }
    // One that is under the keyboard stays there.
    ActionButton {
        objectName: "useAsCard"
        enabled: !row.isCard || activeFocus
        text: L10n.useAsCard
        Accessible.name: text + " " + row.name
        onClicked: row.rows.volumes.useAsCard(row.volumeID)
    }
    ActionButton {
        objectName: "useAsDestination"
        enabled: (row.canBeDestination && !row.isDestination) || activeFocus
        text: L10n.useAsDestination
        Accessible.name: text + " " + row.name
        onClicked: row.rows.volumes.useAsDestination(row.volumeID)
    }
}
