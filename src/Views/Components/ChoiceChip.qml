import QtQuick
import SlatewiseViews

// One choice on a line of chips.
Chip {
    id: chip

    required property int index
    required property string value
    required property string name
    required chosen

    readonly property ChipLine line: parent as ChipLine

    objectName: "chip:" + name
    hue: line ? line.hue : DITTheme.accent
    text: name
    focusPolicy: line && index === line.currentIndex || activeFocus ? Qt.TabFocus : Qt.NoFocus
    Keys.onLeftPressed: line.stepped(index - 1)
    Keys.onRightPressed: line.stepped(index + 1)
    // Not on the line yet while it is made.
    onChosenChanged: {
        if (line)
            line.chosenChanged()
    }
    onActiveFocusChanged: {
        if (!activeFocus)
            return
        line.currentIndex = index
        line.wanted(chip)
    }
    onClicked: {
        line.currentIndex = index
        line.tap(value, chip)
    }
}
