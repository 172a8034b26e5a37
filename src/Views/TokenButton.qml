import QtQuick
import SlatewiseViews

// Puts a token into a template. Wears the token's label; the token itself shows under the pointer.
ActionButton {
    id: button

    required property string value
    required property string name

    objectName: "token:" + value
    height: DITTheme.smallControlHeight
    text: name
    help: value
    onClicked: (parent as ChoiceFlow).tap(value, button)
}
