import QtQuick
import SlatewiseViews

// All there is to see when the program cannot start: why.
Window {
    id: window

    required property string message
    required property string buttonText

    title: Application.displayName
    color: DITTheme.window
    width: 480
    height: content.implicitHeight + 64
    visible: true

    Column {
        id: content
        anchors.centerIn: parent
        width: parent.width - 64
        spacing: 24

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            symbol: "cross-octagon"
            size: 40
            color: DITTheme.danger
        }
        AppText {
            width: parent.width
            text: window.message
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
        }
        ActionButton {
            anchors.horizontalCenter: parent.horizontalCenter
            kind: ActionButton.Prominent
            focus: true
            text: window.buttonText
            onClicked: window.close()
        }
    }
}
