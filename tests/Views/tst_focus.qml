import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Focus"

    function test_nothing_is_typed_into_before_a_click() {
        keyClick(Qt.Key_A)
        compare(field("crews").text, "")
        compare(field("units").text, "")
        mouseClick(field("units"))
        keyClick(Qt.Key_A)
        compare(model.units.newUnitName, "a")
    }

    function test_a_click_elsewhere_hands_the_keyboard_back_data() {
        return [
            { tag: "crew chip", target: () => chip("crews", 1) },
            { tag: "unit chip", target: () => chip("units", 2) },
            { tag: "card", target: () => row("cards", 1) },
            { tag: "card's mark", target: () => find("mark", row("cards", 1)) },
            { tag: "disk", target: () => row("disks", 0) }
        ]
    }
    function test_a_click_elsewhere_hands_the_keyboard_back(data) {
        for (const block of ["crews", "units"]) {
            mouseClick(field(block))
            verify(field(block).activeFocus)
            mouseClick(data.target())
            verify(!field(block).activeFocus, block)
            keyClick(Qt.Key_X)
            compare(field(block).text, "")
        }
    }

    function test_return_in_a_field_adds_its_name() {
        mouseClick(field("units"))
        keyClick(Qt.Key_Q)
        keyClick(Qt.Key_Return)
        compare(chip("units", 7).text, "q")
        compare(field("units").text, "")
        mouseClick(field("crews"))
        keyClick(Qt.Key_W)
        mouseClick(find("new", find("crews")))
        compare(chip("crews", 2).text, "w")
    }

    function test_arrows_go_along_the_chips_and_stay_after_a_tap() {
        chip("units", 0).forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Right)
        keyClick(Qt.Key_Right)
        verify(chip("units", 2).activeFocus)
        keyClick(Qt.Key_Space)
        verify(chip("units", 2).chosen && chip("units", 2).activeFocus)
        keyClick(Qt.Key_Left)
        keyClick(Qt.Key_Return)
        compare(row("cards", 0).unit, "CamB")
    }

    function test_a_screen_reader_says_what_things_are() {
        const cases = [
            [row("cards", 0), Accessible.ListItem, "A001, 118.2 GB, /media/dit/A001, Ekip1, CamA", false],
            [find("mark", row("cards", 0)), Accessible.CheckBox, "Select A001", true],
            [find("mark", row("cards", 2)), Accessible.CheckBox, "Select SES_MIX_02", false],
            [find("remove", row("cards", 0)), Accessible.Button, "Remove path A001", false],
            [chip("crews", 0), Accessible.RadioButton, "Ekip1", true],
            [chip("units", 1), Accessible.RadioButton, "CamB", false],
            [field("units"), Accessible.EditableText, "Unit name", false],
            [find("copy"), Accessible.Button, "Copy", false],
            [find("title", find("status")), Accessible.AlertMessage, model.batch.title, false]
        ]
        for (const [item, role, name, checked] of cases)
            compare(desktop.spoken(item), [role, name, checked])
        // Also what is made once the reader listens.
        model.settings.isPresented = true
        const toggle = () => findChild(root.Window.window.contentItem, "eject")
        tryVerify(() => toggle() !== null)
        compare(desktop.spoken(toggle()), [Accessible.CheckBox, "Eject card after a successful copy", true])
        model.settings.isPresented = false
    }

    // By Tab alone, every control is reached once, and the way closes.
    function test_tab_reaches_everything() {
        const expected = [
            find("chooseFolder", find("cards")), find("clearAll", find("cards")),
            row("cards", 0), find("mark", row("cards", 0)), find("remove", row("cards", 0)),
            find("chooseFolder", find("disks")), find("clearAll", find("disks")),
            row("disks", 0), find("mark", row("disks", 0)), find("remove", row("disks", 0)),
            chip("crews", 0), field("crews"), find("new", find("crews")), find("delete", find("crews")),
            chip("units", 0), field("units"), find("delete", find("units")),
            find("advanced"), find("history"), find("otherVolumes"), find("copy")
        ]
        expected[0].forceActiveFocus(Qt.TabFocusReason)
        const seen = []
        for (let i = 0; i < expected.length + 1; ++i) {
            seen.push(focusItem())
            keyClick(Qt.Key_Tab)
        }
        for (let i = 0; i < expected.length; ++i)
            verify(seen[i] === expected[i], "stop " + i + ": " + seen[i] + " is not " + expected[i])
    }
}
