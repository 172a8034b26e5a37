import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The settings, and the one button that matters. Copy and Stop take turns in one place, and the
// keyboard stays there with them as long as there is something to copy. A click that was meant for
// the one that has just gone does nothing.
RowLayout {
    id: row

    required property AppModel appModel

    readonly property ActionButton shown: appModel.batch.isBusy ? stop : copy
    property bool hasKeyboard: false
    property Settling turn: Settling {
        duration: Appearance.doubleClickInterval
    }

    spacing: 8

    onShownChanged: {
        turn.restart()
        if (hasKeyboard)
            Later.call(takeKeyboard)
    }

    Component.onCompleted: turn.begin = 0

    // A button that is hidden or disabled loses the keyboard; whether the other one comes in its
    // place shows in the same moment.
    function followKeyboard(has: bool) {
        if (has)
            hasKeyboard = true
        else
            Later.call(lookAgain)
    }

    function lookAgain() {
        hasKeyboard = shown.activeFocus
    }

    function takeKeyboard() {
        shown.forceActiveFocus(Qt.TabFocusReason)
    }

    ActionButton {
        objectName: "advanced"
        Layout.preferredHeight: 40
        text: L10n.advanced
        onClicked: row.appModel.settings.isPresented = true
    }
    ActionButton {
        objectName: "history"
        Layout.preferredHeight: 40
        text: L10n.history
        onClicked: row.appModel.history.isPresented = true
    }
    ActionButton {
        objectName: "otherVolumes"
        Layout.preferredHeight: 40
        text: L10n.otherVolumes
        onClicked: row.appModel.otherVolumes.isPresented = true
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
        text: L10n.stop
        onClicked: {
            if (row.turn.isOver())
                row.appModel.batch.cancel()
        }
    }
    ActionButton {
        id: copy
        objectName: "copy"
        Layout.preferredHeight: 40
        Layout.preferredWidth: Math.max(160, implicitWidth)
        visible: row.shown === copy
        onActiveFocusChanged: row.followKeyboard(activeFocus)
        enabled: row.appModel.batch.canCopy
        kind: ActionButton.Prominent
        font.pixelSize: DITTheme.headline
        text: row.appModel.settings.verifyOnly ? L10n.hashOnly : L10n.copy
        onClicked: {
            if (row.turn.isOver())
                row.appModel.batch.start()
        }
    }
}
