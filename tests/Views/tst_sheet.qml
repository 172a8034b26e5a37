import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Sheet"
    scene: "sheet"

    // In the overlay, above the root.
    function inSheet(name) {
        return find(name, root.Window.window.contentItem)
    }
    function shown(name) {
        const item = findChild(root.Window.window.contentItem, name)
        return item !== null && item.visible
    }
    function reach(name) {
        const item = inSheet(name)
        item.forceActiveFocus(Qt.TabFocusReason)
        wait(0)
        return item
    }

    function test_done_keeps_and_closes() {
        keyClick(Qt.Key_Escape)
        verify(model.settings.isPresented)
        mouseClick(inSheet("done"))
        verify(!model.settings.isPresented)
    }

    function test_the_keyboard_comes_back_to_where_it_was() {
        mouseClick(inSheet("done"))
        tryVerify(() => !shown("project"))
        find("advanced").forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Return)
        tryVerify(() => shown("project"))
        reach("done")
        keyClick(Qt.Key_Return)
        tryVerify(() => find("advanced").activeFocus)
    }

    function test_switches_work_at_once() {
        mouseClick(inSheet("eject"))
        compare(model.settings.ejectAfterSuccess, false)
        mouseClick(inSheet("verifyOnly"))
        compare(model.settings.verifyOnly, true)
        verify(!shown("listAuthor"))
        mouseClick(reach("hashList"))
        verify(model.settings.writesHashList && shown("listAuthor"))
        reach("listAuthor")
        keyClick(Qt.Key_A)
        compare(model.settings.listAuthor, "a")
        reach("skip:.Trashes")
        keyClick(Qt.Key_Space)
        verify(inSheet("skip:.Trashes").activeFocus)
        compare(inSheet("skip:.Trashes").on, false)
    }

    function test_names_to_skip() {
        reach("skipField")
        keyClick(Qt.Key_M)
        keyClick(Qt.Key_Return)
        compare(inSheet("skipField").text, "")
        keyClick(Qt.Key_N)
        reach("addSkip")
        keyClick(Qt.Key_Space)
        compare(inSheet("skipField").text, "")
        verify(shown("remove:m") && shown("remove:n"))
        model.settings.removeSkipName("m")
        model.settings.removeSkipName("n")
        for (const name of ["INDEX.DAT", "MISC"]) {
            reach("remove:" + name)
            keyClick(Qt.Key_Space)
        }
        verify(inSheet("skipField").activeFocus, "as no name is left")
        compare(model.settings.extraExcludes.rowCount(), 0)
    }

    function test_a_new_language_closes_nothing() {
        const turkish = find("languages", root.Window.window.contentItem).itemAtIndex(1)
        mouseClick(turkish)
        compare(model.language, "tr")
        verify(model.settings.isPresented)
        compare(inSheet("done").text, "Tamam")
        compare(find("copy").text, "Kopyala")
        compare(find("languages", root.Window.window.contentItem).itemAtIndex(1).chosen, true)
    }

    function test_project_and_reports_folder() {
        reach("project").selectAll()
        keyClick(Qt.Key_P)
        compare(model.settings.projectName, "p")
        reach("defaultReports")
        keyClick(Qt.Key_Space)
        verify(model.reports.isDefault)
        compare(inSheet("defaultReports").enabled, false)
        stage.answerWith("reports")
        reach("chooseReports")
        keyClick(Qt.Key_Space)
        verify(model.reports.path.endsWith("/reports"), model.reports.path)
    }
}
