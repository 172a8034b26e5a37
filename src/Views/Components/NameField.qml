import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// A line of text to type. Takes the keyboard by a click or by Tab, never by itself.
T.TextField {
    id: field

    implicitWidth: 240
    implicitHeight: DITTheme.controlHeight
    leftPadding: 10
    rightPadding: 10
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    color: DITTheme.primary
    placeholderTextColor: DITTheme.tertiary
    selectionColor: DITTheme.accent
    selectedTextColor: DITTheme.accentInk
    font.pixelSize: DITTheme.subheadline
    Accessible.name: placeholderText

    Text {
        visible: !field.length && !field.preeditText
        x: field.leftPadding
        width: field.width - field.leftPadding - field.rightPadding
        height: field.height
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        text: field.placeholderText
        textFormat: Text.PlainText
        font: field.font
        color: field.placeholderTextColor
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: DITTheme.controlRadius
        color: DITTheme.field
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? DITTheme.focusRing : DITTheme.controlStroke
    }
}
