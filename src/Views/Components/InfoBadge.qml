import QtQuick
import SlatewiseViews

// A word about a card, in the hue of what it tells. Not there without a word.
Rectangle {
    id: badge

    property alias text: label.text
    property color hue

    visible: text.length > 0
    // Rather nothing than a spot without a letter.
    opacity: width < 36 ? 0 : 1
    implicitWidth: Math.ceil(Math.min(label.implicitWidth, 112)) + 16
    implicitHeight: label.implicitHeight + 8
    radius: height / 2
    color: DITTheme.badgeFill(hue)
    border.width: 1
    border.color: DITTheme.badgeStroke(hue)

    AppText {
        id: label
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 16)
        font.pixelSize: DITTheme.caption
        font.weight: Font.DemiBold
        color: DITTheme.legible(badge.hue)
    }
}
