import QtQuick
import SlatewiseViews

// A setting that is on or off, its words left, its switch right. The whole row takes the click.
Tick {
    id: row

    // Asks for the other state; `on` is still the old one.
    signal flipped()

    implicitHeight: Math.max(DITTheme.controlHeight, label.implicitHeight + 8)
    font.pixelSize: DITTheme.body
    onClicked: flipped()

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
            radius: height / 2
            color: row.on ? DITTheme.accent : DITTheme.switchOff
            Behavior on color {
                ColorAnimation { duration: DITTheme.quick }
            }

            Rectangle {
                x: row.on ? parent.width - width - 2 : 2
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                radius: height / 2
                color: DITTheme.knob
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
        radius: DITTheme.smallRadius
        color: row.down ? DITTheme.pressed : row.hovered ? DITTheme.hover : DITTheme.clear
    }
}
