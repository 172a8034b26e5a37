import QtQuick
import SlatewiseViews

// Chips side by side, scrolling when there are many. One stop for Tab; the arrows go along it.
//
// Its entries come anew with every change of one of them. Chips go by position, so that they stay
// where they are, and with them the keyboard.
Flickable {
    id: strip

    required property var entries
    property color hue
    // Gives whether an entry is the chosen one.
    property var isChosen: function (entry) { return false }

    // Room for the ring of the chip that has the keyboard.
    readonly property int ringWidth: 3
    readonly property int chosenIndex: entries.findIndex(entry => isChosen(entry))
    // Where Tab stops.
    property int currentIndex: 0

    signal tapped(var entry)

    implicitHeight: DITTheme.controlHeight + 2 * ringWidth
    contentWidth: line.width
    contentHeight: height
    flickableDirection: Flickable.HorizontalFlick
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentWidth > width
    clip: interactive

    onEntriesChanged: currentIndex = Math.max(0, Math.min(currentIndex, entries.length - 1))
    // What is chosen is in sight, as is one that has just been added.
    onChosenIndexChanged: Qt.callLater(reveal, chosenIndex)
    onContentWidthChanged: Qt.callLater(reveal, chosenIndex)

    function itemAtIndex(index) {
        return chips.itemAt(index)
    }
    function reveal(index) {
        const chip = chips.itemAt(index)
        if (!chip)
            return
        const least = chip.x + chip.width + ringWidth - width
        contentX = Math.max(0, least, Math.min(contentX, chip.x - ringWidth))
    }
    function focusChip(index) {
        const chip = chips.itemAt(index)
        if (chip)
            chip.forceActiveFocus(Qt.TabFocusReason)
    }

    Row {
        id: line
        padding: strip.ringWidth
        spacing: 8

        Repeater {
            id: chips
            model: strip.entries.length

            Chip {
                required property int index
                readonly property var entry: strip.entries[index] ?? ({})

                objectName: "chip:" + text
                hue: strip.hue
                text: entry.name ?? ""
                chosen: strip.isChosen(entry)
                focusPolicy: index === strip.currentIndex || activeFocus ? Qt.TabFocus : Qt.NoFocus
                Keys.onLeftPressed: strip.focusChip(index - 1)
                Keys.onRightPressed: strip.focusChip(index + 1)
                onActiveFocusChanged: {
                    if (!activeFocus)
                        return
                    strip.currentIndex = index
                    strip.reveal(index)
                }
                onClicked: {
                    strip.currentIndex = index
                    strip.tapped(entry)
                }
            }
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
            const end = strip.contentWidth - strip.width
            strip.contentX = Math.max(0, Math.min(end, strip.contentX - event.angleDelta.y / 2))
        }
    }
}
