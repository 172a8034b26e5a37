import QtQuick
import SlatewiseViews

// Chips side by side, scrolling when there are many. One stop for Tab; the arrows go along it.
Flickable {
    id: strip

    required property ChoiceListModel choices
    property alias hue: line.hue
    property alias tappedValue: line.tappedValue

    // Room for the ring of the chip that has the keyboard.
    readonly property int ringWidth: 3

    signal tapped()

    implicitHeight: DITTheme.controlHeight + 2 * ringWidth
    contentWidth: line.width
    contentHeight: height
    flickableDirection: Flickable.HorizontalFlick
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentWidth > width
    clip: interactive

    onContentWidthChanged: Later.call(revealChosen)

    function itemAtIndex(index: int): ChoiceChip {
        return chips.itemAt(index) as ChoiceChip
    }
    function reveal(chip: Item) {
        const least = chip.x + chip.width + ringWidth - width
        contentX = Math.max(0, least, Math.min(contentX, chip.x - ringWidth))
    }
    // What is chosen is in sight, as is one that has just been added.
    function revealChosen() {
        for (let index = 0; index < chips.count; ++index) {
            const chip = itemAtIndex(index)
            if (chip && chip.chosen)
                reveal(chip)
        }
    }

    function scroll(angle: real) {
        contentX = Math.max(0, Math.min(contentWidth - width, contentX - angle / 2))
    }

    ChipLine {
        id: line
        padding: strip.ringWidth
        spacing: 8
        onTapped: strip.tapped()

        Repeater {
            id: chips
            model: strip.choices
            onCountChanged: line.currentIndex = Math.max(0, Math.min(line.currentIndex, count - 1))

            ChoiceChip {}
        }
    }
    Connections {
        target: line
        function onWanted(chip: Item) {
            strip.reveal(chip)
        }
        function onChosenChanged() {
            Later.call(strip.revealChosen)
        }
        function onStepped(index: int) {
            const chip = strip.itemAtIndex(index)
            if (chip)
                chip.forceActiveFocus(Qt.TabFocusReason)
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
            GradientStop { position: 0; color: DITTheme.panelGroundClear }
            GradientStop { position: 1; color: DITTheme.panelGround }
        }
    }

    // A wheel goes up and down; the strip goes sideways.
    WheelHandler {
        enabled: strip.interactive
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        orientation: Qt.Vertical
        onWheel: event => strip.scroll(event.angleDelta.y)
    }
}
