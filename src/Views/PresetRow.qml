import QtQuick
import SlatewiseViews

// A ready-made template: its name, and what it is good for.
Pressable {
    id: row

    required property var modelData

    signal chosen(string whole)

    objectName: "preset:" + modelData.template
    implicitHeight: DITTheme.controlHeight
    text: modelData.name
    Accessible.description: modelData.blurb
    onClicked: chosen(modelData.template)

    contentItem: Item {
        AppText {
            id: name
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, 220)
            text: row.text
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        AppText {
            anchors { left: parent.left; leftMargin: 220; right: parent.right }
            anchors.baseline: name.baseline
            text: row.modelData.blurb
            font.pixelSize: DITTheme.caption
            color: DITTheme.secondary
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: -8
        anchors.rightMargin: -8
        radius: 6
        color: row.down ? DITTheme.pressed : row.hovered ? DITTheme.hover : "transparent"

        FocusRing {
            gap: -2
            shown: row.visualFocus
        }
    }
}
