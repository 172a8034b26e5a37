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
    readonly property int fadeWidth: 32

    // Chips over which an edge reaches.
    readonly property int hiddenBefore: interactive && !atXBeginning
        ? countOf(chip => chip.x + 1 < contentX + fadeWidth) : 0
    readonly property int hiddenBehind: interactive && !atXEnd
        ? countOf(chip => chip.x + chip.width - 1 > contentX + width - fadeWidth) : 0

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
        // Clear of what fades, unless it is the last on that side.
        const most = Math.max(0, contentWidth - width)
        const least = chip.x + chip.width + fadeWidth - width
        contentX = Math.max(0, Math.min(most, Math.max(least, Math.min(contentX, chip.x - fadeWidth))))
    }
    // What is chosen is in sight, as is one that has just been added.
    function revealChosen() {
        for (let index = 0; index < chips.count; ++index) {
            const chip = itemAtIndex(index)
            if (chip && chip.chosen)
                reveal(chip)
        }
    }

    function countOf(isMeant: var): int {
        let count = 0
        for (let index = 0; index < chips.count; ++index) {
            const chip = itemAtIndex(index)
            count += chip && isMeant(chip) ? 1 : 0
        }
        return count
    }
    function scroll(distance: real) {
        contentX = Math.max(0, Math.min(contentWidth - width, contentX + distance))
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
    SideFade {
        objectName: "moreBefore"
        parent: strip
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: strip.fadeWidth
        pointsLeft: true
        count: strip.hiddenBefore
        onPressed: strip.scroll(2 * strip.fadeWidth - strip.width)
    }
    SideFade {
        objectName: "moreBehind"
        parent: strip
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: strip.fadeWidth
        count: strip.hiddenBehind
        onPressed: strip.scroll(strip.width - 2 * strip.fadeWidth)
    }

    // A wheel goes up and down; the strip goes sideways.
    WheelHandler {
        enabled: strip.interactive
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        orientation: Qt.Vertical
        onWheel: event => strip.scroll(-event.angleDelta.y / 2)
    }
}
