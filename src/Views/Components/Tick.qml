import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// Something that is on or off. Shows what it is told (`on`), not what was last clicked: a change that
// is refused leaves it. Clicks ask for the other state.
T.CheckBox {
    id: tick

    property bool on: false

    checked: on
    nextCheckState: () => checkState
    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Keys.forwardTo: PressKeys { button: tick }
}
