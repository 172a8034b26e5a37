import QtQuick
import QtQuick.Templates as T

// What the keyboard does to a button: Space presses it, as everywhere, and so does Return. A key that
// is held down presses once. A button forwards its keys here.
Item {
    required property T.AbstractButton button

    Keys.onPressed: event => press(event)
    Keys.onReleased: event => release(event)

    function press(event: KeyEvent) {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
        if (isReturn && !event.isAutoRepeat)
            button.clicked()
        event.accepted = isReturn || event.key === Qt.Key_Space && event.isAutoRepeat
    }
    function release(event: KeyEvent) {
        event.accepted = event.key === Qt.Key_Space && event.isAutoRepeat
    }
}
