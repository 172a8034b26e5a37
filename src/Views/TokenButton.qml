import QtQuick
import SlatewiseViews

// Puts a token into a template. Wears the token's label; the token itself shows under the pointer.
ActionButton {
    required property var modelData

    signal tapped(string token)

    objectName: "token:" + modelData.token
    height: DITTheme.smallControlHeight
    text: modelData.label
    help: modelData.token
    onClicked: tapped(modelData.token)
}
