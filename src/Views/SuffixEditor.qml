import QtQuick
import SlatewiseViews

// A path template as one line of plain text. `suffix` is what it holds, at any moment without line
// ends, however they came in.
TextInput {
    id: editor

    readonly property string suffix: text.replace(lineEnds, "")
    readonly property var lineEnds: /[\n\r\u2028\u2029\v\f]/g

    clip: true
    selectByMouse: true
    // A token replaces what is selected, even while its button has the keyboard.
    persistentSelection: true
    inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
    verticalAlignment: TextInput.AlignVCenter
    font.family: Appearance.fixedFontFamily
    color: DITTheme.primary
    selectionColor: DITTheme.accent
    selectedTextColor: DITTheme.accentInk

    onTextChanged: {
        const line = text.replace(lineEnds, "")
        if (line === text)
            return
        // All at once, however many came in; the caret stays behind the same letter.
        const caret = text.slice(0, cursorPosition).replace(lineEnds, "").length
        remove(0, length)
        insert(0, line)
        cursorPosition = caret
    }

    // Puts `piece` at the caret, in place of what is selected, and goes on behind it.
    function insertToken(piece: string) {
        const start = selectionStart
        remove(selectionStart, selectionEnd)
        insert(start, piece)
        cursorPosition = start + piece.replace(lineEnds, "").length
        forceActiveFocus()
    }

    // Puts `whole` in place of everything.
    function replaceAll(whole: string) {
        remove(0, length)
        insert(0, whole)
        cursorPosition = length
    }
}
