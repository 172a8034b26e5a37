import QtQuick
import SlatewiseViews

// A ready-made template: its name, and what it is good for.
Pressable {
    id: row

    required property string value
    required property string name
    required property string detail

    objectName: "preset:" + value
    width: parent ? parent.width : 0
    implicitHeight: DITTheme.controlHeight
    text: name
    Accessible.description: detail
    onClicked: (parent as ChoiceFlow).tap(value, row)

    contentItem: Item {
        AppText {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, 220)
            text: row.text
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        AppText {
            anchors { left: parent.left; leftMargin: 220; right: parent.right }
            anchors.baseline: label.baseline
            text: row.detail
            font.pixelSize: DITTheme.caption
            color: DITTheme.secondary
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: -8
        anchors.rightMargin: -8
        radius: DITTheme.smallRadius
        color: row.down ? DITTheme.pressed : row.hovered ? DITTheme.hover : DITTheme.clear

        FocusRing {
            gap: -2
            shown: row.visualFocus
        }
    }
}
