import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Lists"

    // A click is meant for the rows as they stand.
    function settle(column) {
        tryVerify(() => find("list", find(column)).settling.isOver())
    }

    function test_the_pointer_on_a_row_data() {
        return [
            { tag: "card", list: "cards", focused: true, left: ["A001", "SES_MIX_02"] },
            { tag: "disk", list: "disks", focused: false, left: ["SHUTTLE_01"] }
        ]
    }
    function test_the_pointer_on_a_row(data) {
        const item = row(data.list, 1)
        settle(data.list)
        mouseClick(find("mark", item))
        verify(!item.selected && !item.focused)
        mouseClick(item, item.width / 2, item.height / 2)
        compare(item.focused, data.focused)
        mouseClick(find("remove", item))
        compare(names(data.list), data.left)
    }

    // Of A001 and B004, which are ticked, the first has the focus.
    function test_a_fill_means_ticked_and_a_ring_in_focus() {
        const looks = () => [0, 1, 2].map(index => {
            const ground = row("cards", index).background
            return [Qt.colorEqual(ground.color, DITTheme.chosenFill), ground.border.width > 1]
        })
        mouseMove(root, 1, 1)
        compare(looks(), [[true, true], [true, false], [false, false]])
        model.cards.focus(row("cards", 2).volumeID)
        compare(looks(), [[true, false], [true, false], [false, true]])
    }

    function test_keys_on_a_row() {
        row("cards", 0).forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Down)
        verify(row("cards", 1).activeFocus)
        keyClick(Qt.Key_Space)
        verify(!row("cards", 1).selected && !row("cards", 1).focused)
        keyClick(Qt.Key_Return)
        verify(row("cards", 1).focused)
        keyClick(Qt.Key_Delete)
        compare(names("cards"), ["A001", "SES_MIX_02"])
    }

    // What a second click meets is not what it was meant for.
    function test_a_double_click_removes_one_card() {
        settle("cards")
        const cross = find("remove", row("cards", 0))
        const place = cross.mapToItem(root, cross.width / 2, cross.height / 2)
        mouseClick(root, place.x, place.y)
        waitForRendering(root)
        mouseClick(root, place.x, place.y)
        compare(names("cards"), ["B004", "SES_MIX_02"])
        settle("cards")
        mouseClick(root, place.x, place.y)
        compare(names("cards"), ["SES_MIX_02"])
    }

    function test_volumes_that_come_and_go_leave_the_keyboard_in_place() {
        row("cards", 1).forceActiveFocus(Qt.TabFocusReason)
        stage.plugInCard("Z009")
        stage.moveToTop("Z009")
        tryVerify(() => row("cards", 2).activeFocus, 5000, "the same card, one further down")
        compare(row("cards", 2).name, "B004")
        stage.pull("B004")
        tryVerify(() => row("cards", 2).activeFocus)
        stage.pullAll()
        tryVerify(() => find("chooseFolder", find("cards")).activeFocus)
        // What comes into an empty column is met by Tab.
        stage.plugInCard("N001")
        tryVerify(() => row("cards", 0) !== null)
        const fewStops = 24
        for (let stop = 0; stop < fewStops && !row("cards", 0).activeFocus; ++stop)
            keyClick(Qt.Key_Tab)
        verify(row("cards", 0).activeFocus)
    }

    function test_rows_lie_one_below_the_other() {
        const height = row("cards", 0).height
        stage.plugInCard("Z009")
        stage.moveToTop("Z009")
        tryVerify(() => row("cards", 0).name === "Z009")
        for (let index = 0; index < 4; ++index)
            tryVerify(() => row("cards", index).y - row("cards", 0).y === index * (height + 8))
    }

    function test_long_names_push_nothing_out_of_a_row() {
        for (const width of [984, 700]) {
            test.width = width
            for (const needsUnit of [false, true]) {
                model.cards.clear()
                model.units.newCrewName = "Kalabalık ve Uzun Adlı Birinci Ekip"
                model.units.addCrew()
                stage.choose("A001", needsUnit ? "" : "Steadicam Operator Number Two")
                if (needsUnit)
                    model.batch.start()
                compare(row("cards", 0).needsUnit, needsUnit)
                waitForRendering(root)
                const line = row("cards", 0)
                const cross = find("remove", line)
                verify(cross.mapToItem(line, cross.width, 0).x <= line.width - 10 + 0.5, width)
            }
        }
        test.width = 984
    }

    function test_what_is_hidden_shows_that_it_is_there() {
        for (let card = 0; card < 8; ++card)
            stage.plugInCard("M" + card)
        const cards = find("cards")
        const list = find("list", cards)
        const above = find("above", cards)
        tryVerify(() => list.atYEnd && above.count > 3, 5000, "what is new is in sight")
        verify(!find("below", cards).visible)
        compare(find("words", above).text, above.count + " more")
        const below = find("below", cards)
        const padding = 10
        for (const [name, index] of [["A001", 0], ["M3", 6], ["M6", 9]]) {
            model.cards.clear()
            stage.choose(name, "")
            model.batch.start()
            tryVerify(() => {
                const item = list.itemAtIndex(index)
                return item !== null && item.needsUnit
                    && item.mapToItem(cards, 0, padding).y >= above.y + (above.visible ? above.height : 0)
                    && item.mapToItem(cards, 0, item.height - padding).y <= below.y
            }, 5000, "so is what needs a unit, clear of what says that there is more: " + name)
            verify(below.visible)
        }
        list.contentY = list.originY + 0.4 * list.rowPitch
        verify(above.visible && above.count === 1, "half a name is cut off")
    }

    function test_a_low_window_shows_what_is_new_and_what_is_missing() {
        test.width = 720
        test.height = 410
        waitForRendering(root)
        const isInSight = item => item.mapToItem(root, 0, item.height).y <= find("status").y
                                  && item.mapToItem(root, 0, 0).y >= 0
        stage.plugInCard("N001")
        tryVerify(() => row("cards", 3).name === "N001" && isInSight(row("cards", 3)))
        mouseClick(field("units"))
        field("units").forceActiveFocus(Qt.MouseFocusReason)
        stage.plugInCard("N002")
        tryVerify(() => row("cards", 4).name === "N002")
        wait(50)
        verify(isInSight(field("units")), "who is typing keeps the field")
        root.resignNameFieldFocus()
        stage.pullAll()
        tryVerify(() => find("empty", find("cards")).visible)
        find("upper").contentY = 0
        verify(isInSight(find("empty", find("cards"))) && isInSight(find("empty", find("disks"))))
        test.width = 984
        test.height = 900
    }

    // A person knows better, and may change their mind.
    function test_a_volume_goes_where_its_user_wants_it() {
        const overlay = () => root.Window.window.contentItem
        const isWhollyShown = item => {
            for (let each = item; each; each = each.parent) {
                if (each.opacity < 1)
                    return false
            }
            return item.visible
        }
        const use = name => findChild(findChild(overlay(), "otherVolumeRows"), name)
        stage.plugInUnknown("SAS_01")
        verify(!names("cards").includes("SAS_01") && !names("disks").includes("SAS_01"))
        mouseClick(find("otherVolumes"))
        tryVerify(() => findChild(overlay(), "otherVolumeRows") !== null)
        tryVerify(() => isWhollyShown(use("useAsDestination")))
        mouseClick(use("useAsDestination"))
        tryVerify(() => names("disks").includes("SAS_01"))
        mouseClick(use("useAsCard"))
        tryVerify(() => names("cards").includes("SAS_01") && !names("disks").includes("SAS_01"))
        model.otherVolumes.isPresented = false
    }

    function test_heads_of_the_columns() {
        for (const column of ["cards", "disks"]) {
            stage.answerWith(column)
            mouseClick(find("chooseFolder", find(column)))
            tryVerify(() => names(column).includes(column))
            mouseClick(find("clearAll", find(column)))
            tryVerify(() => !names(column).includes(column))
        }
        verify(find("total", find("cards")).visible)
        verify(!find("total", find("disks")).visible)
    }

    // It shares its line with nothing, and the row does not grow by it.
    function test_a_card_says_that_it_was_offloaded_before() {
        const line = row("cards", 0)
        tryVerify(() => find("subtitle", line).text !== "")
        const size = find("subtitle", line).text
        const [height, path] = [line.height, find("path", line).text]
        line.past = "Differs from offload of Mar 1, 2026 → SSD1, SSD2"
        compare(find("subtitle", line).text, line.past)
        compare(find("path", line).text, size + "  ·  " + path)
        compare(line.height, height)
        verify(line.spoken().includes(size + ", " + line.past + ", " + path))
    }

    function test_a_card_says_what_it_lacks() {
        verify(!find("unitPrompt", row("cards", 0)).visible)
        verify(find("unitBadge", row("cards", 0)).visible)
        model.cards.clear()
        stage.choose("A001", "")
        model.batch.start()
        verify(find("unitPrompt", row("cards", 0)).visible)
        verify(!find("unitBadge", row("cards", 0)).visible)
        verify(find("ekipBadge", row("cards", 0)).visible)
    }

    function test_empty_columns_say_so() {
        verify(!find("empty", find("cards")).visible)
        stage.pullAll()
        tryVerify(() => find("empty", find("cards")).visible && find("empty", find("disks")).visible)
    }

    // File names are no markup.
    function test_names_are_shown_as_they_are() {
        const name = "<b>A</b>\n&amp;"
        stage.plugInCard(name)
        stage.moveToTop(name)
        let shown = false
        function look(item) {
            if (item.text === name && item.textFormat !== undefined)
                shown = item.textFormat === Text.PlainText
            for (const child of Array.from(item.children))
                look(child)
        }
        look(row("cards", 0))
        verify(shown)
    }
}
