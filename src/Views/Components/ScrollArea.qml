import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// A column that scrolls when it is too tall, and follows the keyboard: whatever takes it is brought
// into view.
Flickable {
    id: area

    property int sidePadding: 0
    default property alias items: column.data
    property alias spacing: column.spacing

    implicitHeight: column.implicitHeight
    contentWidth: width
    contentHeight: column.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    clip: interactive

    // What has the keyboard stays in sight when something above it grows.
    onContentHeightChanged: Later.call(followKeyboard)

    function followKeyboard() {
        const item = Window.window ? Window.window.activeFocusItem : null
        if (holds(item))
            reveal(item)
    }
    function reveal(item: Item) {
        if (!item || !interactive)
            return
        const top = item.mapToItem(column, 0, 0).y - 8
        // Of what is taller than the area the beginning.
        const bottom = top + Math.min(item.height + 16, height)
        if (top < contentY)
            contentY = Math.max(0, top)
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height)
    }

    function holds(item: Item) : bool {
        for (let up = item; up; up = up.parent) {
            if (up === column)
                return true
        }
        return false
    }

    Column {
        id: column
        x: area.sidePadding
        width: area.width - 2 * area.sidePadding
    }

    Connections {
        target: area.Window.window
        function onActiveFocusItemChanged() {
            area.followKeyboard()
        }
    }

    T.ScrollBar.vertical: SideBar { needed: area.interactive }
}
