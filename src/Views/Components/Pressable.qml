import QtQuick
import QtQuick.Templates as T

// Something to press: by a click, with Space, or with Return. A key that is held down presses once.
T.AbstractButton {
    focusPolicy: Qt.TabFocus

    Keys.onPressed: event => {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
        if (isReturn && !event.isAutoRepeat)
            clicked()
        event.accepted = isReturn || event.key === Qt.Key_Space && event.isAutoRepeat
    }
    Keys.onReleased: event => {
        event.accepted = event.key === Qt.Key_Space && event.isAutoRepeat
    }
}
