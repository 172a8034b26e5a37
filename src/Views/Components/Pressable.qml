import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// Something to press that does something.
T.AbstractButton {
    id: pressable

    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Keys.forwardTo: PressKeys { button: pressable }
}
