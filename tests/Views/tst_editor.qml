import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Editor"
    scene: "sheet"

    property var editor: null
    readonly property string standard: "{Dest}/{YYYY-MM-DD}/{Ekip}/{Cam}/{CardName}"

    function init_editor() {
        mouseClick(part("edit"))
        editor = part("suffix")
        tryVerify(() => editor.activeFocus)
        waitForRendering(root)
    }
    // The sheet above is the later one; both have a Done.
    function part(name) {
        const found = []
        function look(item) {
            if (item.objectName === name && item.visible)
                found.push(item)
            for (let i = 0; i < item.children.length; ++i)
                look(item.children[i])
        }
        look(root.Window.window.contentItem)
        verify(found.length > 0, name)
        return found[found.length - 1]
    }

    function test_opens_with_the_stored_template() {
        init_editor()
        compare(editor.suffix, standard)
        const preview = part("previewPath").text
        verify(/^\/media\/dit\/SHUTTLE_01\/\d{4}-\d\d-\d\d\/Ekip1\/CamA\/A001$/.test(preview), preview)
        // A disk that goes meanwhile does not change the example.
        stage.pull("SHUTTLE_01")
        editor.replaceAll("{Dest}/x")
        compare(part("previewPath").text, "/media/dit/SHUTTLE_01/x")
    }

    function test_line_ends_never_stay_data() {
        return [
            { tag: "unix", text: "a\nb\nc" }, { tag: "dos", text: "a\r\nb\r\nc" },
            { tag: "at the ends", text: "\nabc\n\n" },
            { tag: "very many", text: "\n".repeat(20000) + "abc" + "\n".repeat(20000) },
            { tag: "unicode", text: "a\u2028b\u2029c" }
        ]
    }
    function test_line_ends_never_stay(data) {
        init_editor()
        editor.replaceAll(data.text)
        compare(editor.text, "abc")
        compare(editor.suffix, "abc")
        // In the middle of a text the caret stays behind what came in.
        editor.replaceAll("xy")
        editor.cursorPosition = 1
        editor.insertToken(data.text)
        compare(editor.text, "xabcy")
    }

    function test_paste_from_the_clipboard_becomes_one_line() {
        init_editor()
        clipboard.text = "one\ntwo\r\n"
        clipboard.selectAll()
        clipboard.copy()
        editor.selectAll()
        keySequence(StandardKey.Paste)
        compare(editor.suffix, "onetwo")
        compare(editor.cursorPosition, 6)
        keyClick(Qt.Key_A)
        compare(editor.suffix, "onetwoa")
    }
    TextEdit {
        id: clipboard
        visible: false
    }

    function test_a_token_replaces_what_is_selected() {
        init_editor()
        editor.replaceAll("abcdef")
        editor.select(2, 4)
        mouseClick(part("token:{Project}"))
        compare(editor.suffix, "ab{Project}ef")
        compare(editor.cursorPosition, 2 + "{Project}".length)
        verify(editor.activeFocus)
        keyClick(Qt.Key_X)
        compare(editor.suffix, "ab{Project}xef")
        // Also when the keyboard has been at the button meanwhile.
        editor.select(0, 2)
        part("token:_").forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Space)
        compare(editor.suffix, "_{Project}xef")
        mouseClick(part("clear"))
        compare(editor.suffix, "")
    }

    function test_presets_and_default_replace_everything() {
        init_editor()
        const flat = "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}_{HHmmss}"
        mouseClick(part("preset:" + flat))
        compare(editor.suffix, flat)
        mouseClick(part("default"))
        compare(editor.suffix, standard)
        compare(model.pathTemplate.text, standard)
    }

    function test_a_path_out_of_the_disk_is_refused() {
        init_editor()
        for (const text of ["{Dest}/../x", "{Dest}", "/film/{CardName}"]) {
            editor.replaceAll(text)
            verify(!part("done").enabled, text)
            verify(part("objection").text.includes("leads out of the destination"))
        }
        editor.replaceAll("{Dest}/{CardName}")
        verify(part("done").enabled)
    }

    function test_how_it_ends_data() {
        return [
            { tag: "cancel", text: "{Dest}/x", button: "cancel", stored: standard },
            { tag: "escape", text: "{Dest}/x", key: Qt.Key_Escape, stored: standard },
            { tag: "done", text: "{Dest}/x", button: "done", stored: "{Dest}/x" },
            { tag: "done with nothing", text: "  ", button: "done", stored: standard }
        ]
    }
    function test_how_it_ends(data) {
        init_editor()
        editor.replaceAll(data.text)
        if (data.key)
            keyClick(data.key)
        else
            mouseClick(part(data.button))
        tryVerify(() => !editor.activeFocus)
        compare(model.pathTemplate.text, data.stored)
        verify(model.settings.isPresented, "the settings are still there")
    }
}
