import QtQuick
import SlatewiseViews

// Where the keyboard is: around its parent, a little outside of it.
Rectangle {
    property bool shown: false
    property int gap: 2
    readonly property Rectangle around: parent as Rectangle

    anchors.fill: parent
    anchors.margins: -gap - border.width
    visible: shown
    color: DITTheme.clear
    radius: (around ? around.radius : DITTheme.radius) + gap + border.width
    border.width: 2
    border.color: DITTheme.focusRing
    Accessible.ignored: true
}
