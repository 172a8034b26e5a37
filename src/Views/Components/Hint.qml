import QtQuick

// A tool tip for its parent. Costs nothing until it is shown.
Loader {
    id: hint

    property string text
    property bool shown: false
    readonly property bool isWanted: shown && text.length > 0

    active: isWanted
    sourceComponent: HintBubble {
        parent: hint.parent // qmllint disable unqualified
        text: hint.text // qmllint disable unqualified
    }
}
