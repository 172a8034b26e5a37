import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// A tool tip for its parent. Costs nothing until it is shown.
Loader {
    id: hint

    property string text
    property bool shown: false

    active: shown && text.length > 0
    sourceComponent: T.ToolTip {
        parent: hint.parent
        visible: true
        delay: 500
        text: hint.text
        x: Math.round((parent.width - width) / 2)
        y: parent.height + 4
        implicitWidth: Math.min(label.implicitWidth, 480) + 2 * padding
        implicitHeight: label.height + 2 * padding
        padding: 8
        margins: 8
        closePolicy: T.Popup.NoAutoClose
        contentItem: Text {
            id: label
            text: hint.text
            textFormat: Text.PlainText
            wrapMode: Text.WrapAtWordBoundaryOrAnywhere
            color: DITTheme.dark ? "#17151d" : "#f4f3f8"
            font.pixelSize: DITTheme.caption
        }
        background: Rectangle {
            color: DITTheme.dark ? "#e9e7f2" : "#2b2933"
            radius: 6
        }
    }
}
