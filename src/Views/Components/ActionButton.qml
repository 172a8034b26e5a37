import QtQuick
import SlatewiseViews

// A button that does something. What it does shows in its kind; the main one of a screen is
// prominent, one that takes something away or stops work is destructive.
Pressable {
    id: button

    enum Kind {
        Plain,
        Bordered,
        Prominent,
        Destructive
    }

    property int kind: ActionButton.Bordered
    property string symbol
    property string help

    readonly property bool isPlain: kind === ActionButton.Plain
    readonly property color foreground: {
        switch (kind) {
        case ActionButton.Prominent:
            return enabled ? DITTheme.accentInk : DITTheme.secondary
        case ActionButton.Destructive:
            return DITTheme.dangerText
        case ActionButton.Plain:
            return DITTheme.accentText
        }
        return DITTheme.primary
    }
    readonly property color fill: {
        switch (kind) {
        case ActionButton.Prominent:
            return enabled ? DITTheme.accent : DITTheme.pressed
        case ActionButton.Destructive:
            return DITTheme.destructiveFill
        case ActionButton.Plain:
            return DITTheme.clear
        }
        return DITTheme.controlFill
    }
    readonly property color stroke: {
        switch (kind) {
        case ActionButton.Bordered:
            return DITTheme.controlStroke
        case ActionButton.Destructive:
            return DITTheme.destructiveStroke
        }
        return DITTheme.clear
    }

    implicitHeight: DITTheme.controlHeight
    implicitWidth: content.implicitWidth + leftPadding + rightPadding
    leftPadding: isPlain ? 8 : 12
    rightPadding: leftPadding
    opacity: enabled ? 1 : kind === ActionButton.Prominent ? 0.8 : DITTheme.disabledOpacity
    font.pixelSize: DITTheme.subheadline
    font.weight: kind === ActionButton.Prominent ? Font.DemiBold : Font.Medium
    Accessible.description: help

    contentItem: Item {
        id: content
        implicitWidth: line.implicitWidth
        implicitHeight: line.implicitHeight

        Row {
            id: line
            anchors.centerIn: parent
            spacing: 6

            Icon {
                visible: button.symbol.length > 0
                anchors.verticalCenter: parent.verticalCenter
                symbol: button.symbol
                color: button.foreground
            }
            Text {
                visible: button.text.length > 0
                anchors.verticalCenter: parent.verticalCenter
                text: button.text
                textFormat: Text.PlainText
                font: button.font
                color: button.foreground
            }
        }
    }

    background: Rectangle {
        id: ground
        radius: DITTheme.controlRadius
        color: button.fill
        border.width: 1
        border.color: button.stroke

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: button.kind === ActionButton.Prominent ? DITTheme.shade : DITTheme.primary
            opacity: button.down ? 0.14 : button.hovered ? 0.07 : 0
            Behavior on opacity {
                NumberAnimation { duration: DITTheme.quick }
            }
        }
        FocusRing {
            shown: button.visualFocus
        }
    }

    Hint {
        text: button.help
        shown: button.hovered
    }
}
