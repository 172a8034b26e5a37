import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// A page above the window for something to be settled before going on. Stays until it is dismissed
// by its own buttons. `foot` is the row of these, at the right.
T.Popup {
    id: sheet

    property string title
    property alias foot: buttons.data
    default property alias content: body.items

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(680, parent ? parent.width - 32 : 680)
    height: Math.min(heading.height + body.implicitHeight + buttons.height + 65,
                     parent ? parent.height - 32 : 900)
    modal: true
    focus: true
    padding: 0
    closePolicy: T.Popup.NoAutoClose

    // What had the keyboard before, and gets it back.
    property Item opener: null

    onAboutToShow: {
        opener = parent.Window.window.activeFocusItem
        body.contentY = 0
    }
    onClosed: {
        if (opener)
            opener.forceActiveFocus(Qt.TabFocusReason)
        opener = null
    }

    T.Overlay.modal: Rectangle {
        color: DITTheme.dim
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: DITTheme.gentle }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: DITTheme.quick }
    }

    background: Rectangle {
        color: DITTheme.sheet
        radius: DITTheme.sheetRadius
        border.width: 1
        border.color: DITTheme.panelStroke
    }

    contentItem: FocusScope {
        focus: true
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title

        AppText {
            id: heading
            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 20 }
            text: sheet.title
            font.pixelSize: DITTheme.title3
            font.weight: Font.DemiBold
        }
        ScrollArea {
            id: body
            anchors {
                left: parent.left; right: parent.right
                top: heading.bottom; bottom: rule.top
                topMargin: 12
            }
            sidePadding: 20
        }
        Divider {
            id: rule
            anchors { left: parent.left; right: parent.right; bottom: buttons.top; bottomMargin: 16 }
        }
        Row {
            id: buttons
            anchors { right: parent.right; bottom: parent.bottom; margins: 16; rightMargin: 20 }
            spacing: 8
        }
    }
}
