import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// What a tool tip looks like.
T.ToolTip {
    id: bubble

    visible: true
    delay: 500
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? parent.height + 4 : 0
    implicitWidth: Math.min(label.implicitWidth, 480) + 2 * padding
    implicitHeight: label.implicitHeight + 2 * padding
    padding: 8
    margins: 8
    closePolicy: T.Popup.NoAutoClose
    contentItem: Text {
        id: label
        objectName: "hintText"
        text: bubble.text
        textFormat: Text.PlainText
        wrapMode: Text.WrapAtWordBoundaryOrAnywhere
        color: DITTheme.hintInk
        font.pixelSize: DITTheme.caption
    }
    background: Rectangle {
        color: DITTheme.hint
        radius: DITTheme.smallRadius
    }
}
