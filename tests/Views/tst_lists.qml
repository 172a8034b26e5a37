import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Lists"

    // Rows have stood still by then.
    readonly property int settled: 550

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
        wait(settled)
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

    // What a second click meets is not what it was meant for.
    function test_a_double_click_removes_one_card() {
        wait(settled)
        const cross = find("remove", row("cards", 0))
        const place = cross.mapToItem(root, cross.width / 2, cross.height / 2)
        mouseClick(root, place.x, place.y)
        model.cards.remove(0)
        waitForRendering(root)
        mouseClick(root, place.x, place.y)
        compare(model.calls, [["removeCard", "a"]])
        wait(settled)
        mouseClick(root, place.x, place.y)
        compare(model.calls[1], ["removeCard", "b"])
    }

    function test_volumes_that_come_and_go_leave_the_keyboard_in_place() {
        row("cards", 1).forceActiveFocus(Qt.TabFocusReason)
        model.add(model.cards, { volumeID: "z", name: "Z009" })
        model.cards.move(model.cards.count - 1, 0, 1)
        tryVerify(() => row("cards", 2).activeFocus, 5000, "the same card, one further down")
        compare(row("cards", 2).volumeID, "b")
        model.cards.remove(2)
        tryVerify(() => row("cards", 2).activeFocus)
        model.cards.clear()
        tryVerify(() => find("chooseFolder", find("cards")).activeFocus)
        // What comes into an empty column is met by Tab.
        model.add(model.cards, { volumeID: "n", name: "N001" })
        tryVerify(() => row("cards", 0) !== null)
        keyClick(Qt.Key_Tab)
        keyClick(Qt.Key_Tab)
        verify(row("cards", 0).activeFocus)
    }

    function test_rows_lie_one_below_the_other() {
        const height = row("cards", 0).height
        model.cards.insert(0, { volumeID: "z", name: "Z009", subtitle: "", path: "/media/dit/Z009",
                                selected: false, focused: false, ekip: "", unit: "", needsUnit: false,
                                picked: false })
        tryVerify(() => row("cards", 0).volumeID === "z")
        wait(settled)
        for (let index = 0; index < 4; ++index)
            compare(row("cards", index).y - row("cards", 0).y, index * (height + 8))
    }

    function test_long_names_push_nothing_out_of_a_row() {
        for (const width of [984, 870]) {
            test.width = width
            for (const needsUnit of [false, true]) {
                model.cards.setProperty(0, "ekip", "Kalabalık ve Uzun Adlı Birinci Ekip")
                model.cards.setProperty(0, "unit", needsUnit ? "" : "Steadicam Operator Number Two")
                model.cards.setProperty(0, "needsUnit", needsUnit)
                waitForRendering(root)
                const line = row("cards", 0)
                const cross = find("remove", line)
                verify(cross.mapToItem(line, cross.width, 0).x <= line.width - 10 + 0.5, width)
            }
        }
        test.width = 984
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
