import QtQuick
import SlatewiseViews

// The frame in which the line of a template stands in a sheet.
Rectangle {
    id: host

    required property SuffixEditor editor

    implicitHeight: 40
    radius: DITTheme.controlRadius
    color: DITTheme.field
    border.width: editor.activeFocus ? 2 : 1
    border.color: editor.activeFocus ? DITTheme.focusRing : DITTheme.controlStroke
    data: [editor]

    Binding {
        target: host.editor
        property: "anchors.fill"
        value: host
    }
    Binding {
        target: host.editor
        property: "anchors.leftMargin"
        value: 12
    }
    Binding {
        target: host.editor
        property: "anchors.rightMargin"
        value: 12
    }
}
