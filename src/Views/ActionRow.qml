import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The settings, and the one button that matters. Copy and Stop take turns in one place, and the
// keyboard stays there with them as long as there is something to copy. A click that was meant for
// the one that has just gone does nothing.
RowLayout {
    id: row

    required property var appModel
    required property var l10n

    readonly property ActionButton shown: appModel.isBusy ? stop : copy
    property bool hasKeyboard: false
    property Settling turn: Settling {
        duration: Qt.styleHints.mouseDoubleClickInterval
    }

    spacing: 8

    onShownChanged: {
        turn.restart()
        if (hasKeyboard)
            Qt.callLater(takeKeyboard)
    }

    Component.onCompleted: turn.begin = 0

    // A button that is hidden or disabled loses the keyboard; whether the other one comes in its
    // place shows in the same moment.
    function followKeyboard(has) {
        if (has)
            hasKeyboard = true
        else
            Qt.callLater(() => hasKeyboard = shown.activeFocus)
    }

    function takeKeyboard() {
        shown.forceActiveFocus(Qt.TabFocusReason)
    }

    ActionButton {
        objectName: "advanced"
        Layout.preferredHeight: 40
        text: row.l10n.advanced
        onClicked: row.appModel.isAdvancedPresented = true
    }
    Item {
        Layout.fillWidth: true
    }
    DestructiveButton {
        id: stop
        objectName: "stop"
        Layout.preferredHeight: 40
        Layout.preferredWidth: Math.max(160, implicitWidth)
        visible: row.shown === stop
        onActiveFocusChanged: row.followKeyboard(activeFocus)
        font.pixelSize: DITTheme.headline
        text: row.l10n.stop
        onClicked: {
            if (row.turn.isOver())
                row.appModel.cancelCopy()
        }
    }
    ActionButton {
        id: copy
        objectName: "copy"
        Layout.preferredHeight: 40
        Layout.preferredWidth: Math.max(160, implicitWidth)
        visible: row.shown === copy
        onActiveFocusChanged: row.followKeyboard(activeFocus)
        enabled: row.appModel.canCopy
        kind: ActionButton.Prominent
        font.pixelSize: DITTheme.headline
        text: row.l10n.copy
        onClicked: {
            if (row.turn.isOver())
                row.appModel.startCopy()
        }
    }
}
