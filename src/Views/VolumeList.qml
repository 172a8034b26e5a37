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
    // What takes the keyboard when no row is left.
    property Item refuge: null
    // The row that is to be looked at: the newest, or one that lacks something.
    property int wanted: 0
    // How far the edges reach over rows.
    property int edgeReach: 0
    // All rows are of one height.
    readonly property real rowPitch: count > 0 && contentHeight > 0 ? (contentHeight + spacing) / count : 86
    readonly property real rowHeight: rowPitch - spacing
    // Also one of which the edge cuts off more than its margin, where nothing stands.
    readonly property real rowMargin: 9
    readonly property int hiddenAbove: count > 0 ? Math.max(0, Math.ceil((contentY - originY - rowMargin) / rowPitch)) : 0
    readonly property int hiddenBelow: {
        const shown = Math.floor((contentY - originY + height + spacing + rowMargin) / rowPitch)
        return height > 0 ? Math.max(0, count - shown) : 0
    }

    // By the pointer, anywhere on a row.
    signal touched()
    // A row is new or lacks something, and the user is to see it.
    signal missed(Item row)
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

    function scrollTo(place: real) {
        const most = Math.max(0, contentHeight - height)
        contentY = originY + Math.max(0, Math.min(most, place))
    }
    function showPage(direction: int) {
        scrollTo(contentY - originY + direction * Math.max(rowPitch, height - rowPitch))
    }
    // Clear of the edges, which say that there is more.
    function showWanted() {
        forceLayout()
        const top = wanted * rowPitch - edgeReach
        const bottom = wanted * rowPitch + rowHeight + edgeReach
        const place = contentY - originY
        scrollTo(Math.min(top, Math.max(place, bottom - height)))
        forceLayout()
        const row = itemAtIndex(wanted)
        if (row)
            missed(row)
    }
    function want(row: int) {
        wanted = row
        Later.call(showWanted)
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
        // It went on already, with an earlier row.
        if (refuge && refuge.activeFocus)
            return
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
        function onRowsInserted(parent: var, first: int) {
            list.want(first)
        }
        function onRowWanted(row: int) {
            list.want(row)
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
