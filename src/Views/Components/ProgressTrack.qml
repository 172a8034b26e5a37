import QtQuick
import SlatewiseViews

// How far it is, from 0 to 1, in the colour of how it went. Glides, since a slow disk tells of its
// progress a few times a second only.
Rectangle {
    id: track

    property real fraction: 0
    property color hue: DITTheme.accent

    // What the bar is at this moment.
    property real shown: fraction
    Behavior on shown {
        SmoothedAnimation { velocity: -1; duration: DITTheme.gentle }
    }

    implicitHeight: 8
    radius: height / 2
    color: DITTheme.track
    Accessible.role: Accessible.ProgressBar
    Accessible.name: Math.round(fraction * 100) + "%"

    Rectangle {
        objectName: "fill"
        height: parent.height
        width: track.shown <= 0 ? 0 : Math.max(height, parent.width * track.shown)
        radius: parent.radius
        color: track.hue
    }
}
