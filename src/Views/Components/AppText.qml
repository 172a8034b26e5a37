import QtQuick
import SlatewiseViews

// One line of text, as it is: names of cards and files never become markup. What does not fit is
// shortened, and the whole of it comes up under the pointer.
Text {
    id: label

    color: DITTheme.primary
    font.pixelSize: DITTheme.body
    textFormat: Text.PlainText
    elide: Text.ElideRight
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    HoverHandler {
        id: pointer
        enabled: label.truncated
    }
    Hint {
        text: label.text
        shown: pointer.hovered
    }
}
