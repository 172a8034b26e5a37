import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "History"
    scene: "history"

    function inSheet(name) {
        return find(name, root.Window.window.contentItem)
    }

    function test_a_session_is_chosen_by_pointer_and_keyboard() {
        tryCompare(inSheet("sessions"), "count", 5)
        verify(!inSheet("verifyAgain").enabled)
        const first = inSheet("sessions").itemAtIndex(0)
        mouseClick(first)
        verify(first.chosen && inSheet("verifyAgain").enabled)
        const second = inSheet("sessions").itemAtIndex(1)
        second.forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Return)
        verify(second.chosen && !first.chosen && inSheet("showFolder").enabled)
        mouseClick(inSheet("sessions").itemAtIndex(2))
        verify(!inSheet("showFolder").enabled && inSheet("showReport").enabled, "it was only hashed")
    }

    function test_search_and_close() {
        tryCompare(inSheet("sessions"), "count", 5)
        inSheet("historySearch").forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_B)
        keyClick(Qt.Key_0)
        tryCompare(inSheet("sessions"), "count", 1)
        keyClick(Qt.Key_Escape)
        tryVerify(() => !model.history.isPresented)
        model.history.search = ""
        mouseClick(find("history"))
        verify(model.history.isPresented)
    }
}
