import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Lists"

    function test_the_pointer_on_a_row_data() {
        return [
            { tag: "card", list: "cards", toggle: "toggleCard", focus: "focusCard",
              remove: "removeCard", id: "b", index: 1 },
            { tag: "disk", list: "disks", toggle: "toggleDestination", focus: "focusDestination",
              remove: "removeDestination", id: "x", index: 0 }
        ]
    }
    function test_the_pointer_on_a_row(data) {
        const item = row(data.list, data.index)
        mouseClick(find("mark", item))
        mouseClick(item, item.width / 2, item.height / 2)
        mouseClick(find("remove", item))
        compare(model.calls, [[data.toggle, data.id], [data.focus, data.id], [data.remove, data.id]])
    }

    function test_keys_on_a_row() {
        row("cards", 0).forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Down)
        verify(row("cards", 1).activeFocus)
        keyClick(Qt.Key_Space)
        keyClick(Qt.Key_Return)
        keyClick(Qt.Key_Delete)
        compare(model.calls, [["toggleCard", "b"], ["focusCard", "b"], ["removeCard", "b"]])
    }

    function test_heads_of_the_columns() {
        for (const column of ["cards", "disks"]) {
            mouseClick(find("chooseFolder", find(column)))
            mouseClick(find("clearAll", find(column)))
        }
        compare(model.calls, [["pickCardFolder"], ["clearAllCards"],
                              ["pickDestinationFolder"], ["clearAllDestinations"]])
        verify(find("total", find("cards")).visible)
        verify(!find("total", find("disks")).visible)
    }

    function test_a_card_says_what_it_lacks() {
        verify(!find("unitPrompt", row("cards", 0)).visible)
        verify(find("unitBadge", row("cards", 0)).visible)
        model.cards.setProperty(0, "unit", "")
        model.cards.setProperty(0, "needsUnit", true)
        verify(find("unitPrompt", row("cards", 0)).visible)
        verify(!find("unitBadge", row("cards", 0)).visible)
        verify(find("ekipBadge", row("cards", 0)).visible)
    }

    function test_empty_columns_say_so() {
        verify(!find("empty", find("cards")).visible)
        model.cards.clear()
        model.destinations.clear()
        tryVerify(() => find("empty", find("cards")).visible && find("empty", find("disks")).visible)
    }

    // File names are no markup.
    function test_names_are_shown_as_they_are() {
        model.cards.setProperty(0, "name", "<b>A</b>\n&amp;")
        let shown = false
        function look(item) {
            if (item.text === "<b>A</b>\n&amp;" && item.textFormat !== undefined)
                shown = item.textFormat === Text.PlainText
            for (const child of Array.from(item.children))
                look(child)
        }
        look(row("cards", 0))
        verify(shown)
    }
}
