import QtQuick
import SlatewiseViews

// How far it is, from 0 to 1, in the colour of how it went.
Rectangle {
    id: track

    property real fraction: 0
    property color hue: DITTheme.accent

    implicitHeight: 8
    radius: height / 2
    color: DITTheme.withOpacity(DITTheme.primary, 0.1)
    Accessible.role: Accessible.ProgressBar
    Accessible.name: Math.round(fraction * 100) + "%"

    Rectangle {
        height: parent.height
        width: track.fraction <= 0 ? 0 : Math.max(height, parent.width * track.fraction)
        radius: parent.radius
        color: track.hue
    }
}
