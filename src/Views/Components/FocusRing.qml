import QtQuick
import SlatewiseViews

// Where the keyboard is: around its parent, a little outside of it.
Rectangle {
    property bool shown: false
    property int gap: 2

    anchors.fill: parent
    anchors.margins: -gap - border.width
    visible: shown
    color: "transparent"
    radius: parent.radius !== undefined ? parent.radius + gap + border.width : DITTheme.radius
    border.width: 2
    border.color: DITTheme.focusRing
    Accessible.ignored: true
}
