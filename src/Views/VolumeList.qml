import QtQuick
import SlatewiseViews

// The rows of a column, which call its model through it.
ListView {
    id: list

    required property VolumeListModel volumes
    // Since volumes last changed places: they come and go by themselves, and one that is removed
    // pulls up the next.
    readonly property Settling settling: Settling {}
    property bool holdsKeyboard: false

    // By the pointer, anywhere on a row.
    signal touched()
    // The row that had the keyboard has gone, and there is no other.
    signal keyboardLeft()

    model: volumes
    spacing: 8
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List

    // A list that was empty has no current row yet, and Tab would pass it by.
    onCountChanged: {
        if (currentIndex < 0 && count > 0)
            currentIndex = 0
        settling.restart()
    }

    // The keyboard stays in the column when the row that had it goes; once, however many rows go.
    function holdKeyboard() {
        holdsKeyboard = true
        Later.call(handOnKeyboard)
    }
    function handOnKeyboard() {
        if (!holdsKeyboard)
            return
        holdsKeyboard = false
        forceLayout()
        if (currentItem)
            currentItem.forceActiveFocus(Qt.TabFocusReason)
        else
            keyboardLeft()
    }

    Connections {
        target: list.volumes
        function onRowsMoved() {
            list.settling.restart()
        }
    }

    add: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: DITTheme.gentle }
    }
    displaced: Transition {
        NumberAnimation { properties: "y"; duration: DITTheme.gentle; easing.type: Easing.OutCubic }
        NumberAnimation { property: "opacity"; to: 1; duration: DITTheme.quick }
    }
}
