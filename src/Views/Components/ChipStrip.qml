import QtQuick
import SlatewiseViews

// Chips side by side, scrolling when there are many. One stop for Tab; the arrows go along it.
//
// Its entries come anew with every change of one of them. Chips go by position, so that they stay
// where they are, and with them the keyboard.
ListView {
    id: strip

    required property var entries
    property color hue
    // Gives whether an entry is the chosen one.
    property var isChosen: function (entry) { return false }

    signal tapped(var entry)

    implicitHeight: DITTheme.controlHeight
    orientation: ListView.Horizontal
    spacing: 8
    clip: contentWidth > width
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentWidth > width
    keyNavigationEnabled: true
    reuseItems: false
    cacheBuffer: 4000
    model: entries.length

    delegate: Chip {
        required property int index
        readonly property var entry: strip.entries[index] ?? ({})

        objectName: "chip:" + text
        hue: strip.hue
        text: entry.name ?? ""
        chosen: strip.isChosen(entry)
        focusPolicy: ListView.isCurrentItem || activeFocus ? Qt.TabFocus : Qt.NoFocus
        onClicked: {
            strip.currentIndex = index
            strip.tapped(entry)
        }
    }

    // There is more.
    Rectangle {
        parent: strip
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: 32
        visible: strip.interactive && !strip.atXEnd
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: DITTheme.withOpacity(DITTheme.panelGround, 0) }
            GradientStop { position: 1; color: DITTheme.panelGround }
        }
    }

    // A wheel goes up and down; the strip goes sideways.
    WheelHandler {
        enabled: strip.interactive
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        orientation: Qt.Vertical
        onWheel: event => {
            const limit = strip.contentWidth - strip.width
            strip.contentX = Math.max(0, Math.min(limit, strip.contentX - event.angleDelta.y / 2))
        }
    }
}
