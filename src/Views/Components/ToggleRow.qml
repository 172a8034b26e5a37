import QtQuick
import SlatewiseViews

// A setting that is on or off, its words left, its switch right. The whole row takes the click.
Tick {
    id: row

    signal flipped(bool on)

    implicitHeight: Math.max(DITTheme.controlHeight, label.implicitHeight + 8)
    font.pixelSize: DITTheme.body
    onClicked: flipped(!on)

    contentItem: Item {
        AppText {
            id: label
            anchors.left: parent.left
            anchors.right: track.left
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            text: row.text
            font: row.font
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
        Rectangle {
            id: track
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: 38
            height: 22
            radius: 11
            color: row.on ? DITTheme.accent : DITTheme.withOpacity(DITTheme.primary, 0.3)
            Behavior on color {
                ColorAnimation { duration: DITTheme.quick }
            }

            Rectangle {
                x: row.on ? parent.width - width - 2 : 2
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                radius: 9
                color: "#ffffff"
                Behavior on x {
                    NumberAnimation { duration: DITTheme.quick }
                }
            }
            FocusRing {
                shown: row.visualFocus
            }
        }
    }

    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: -8
        anchors.rightMargin: -8
        radius: 6
        color: row.down ? DITTheme.pressed : row.hovered ? DITTheme.hover : "transparent"
    }
}
