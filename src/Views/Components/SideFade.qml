import QtQuick
import SlatewiseViews

// Where a line goes on to the side: it fades, and says how much more there is.
Item {
    id: fade

    property int count: 0
    property bool pointsLeft: false

    signal pressed()

    visible: count > 0

    Rectangle {
        anchors.fill: parent
        rotation: fade.pointsLeft ? 180 : 0
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: DITTheme.panelGroundClear }
            GradientStop { position: 1; color: DITTheme.panelGround }
        }
    }
    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        x: fade.pointsLeft ? 0 : parent.width - width
        width: words.implicitWidth + 10
        height: words.implicitHeight + 4
        radius: height / 2
        color: DITTheme.sheet
        border.width: 1
        border.color: DITTheme.controlStroke

        AppText {
            id: words
            objectName: "words"
            anchors.centerIn: parent
            // A line has no room for the whole of it.
            text: "+" + fade.count
            font.pixelSize: DITTheme.caption2
            font.weight: Font.DemiBold
            Accessible.name: L10n.rowsBelow.replace("%1", fade.count)
        }
        HoverHandler {
            id: pointer
        }
        TapHandler {
            // Nothing of it for what lies below.
            gesturePolicy: TapHandler.WithinBounds
            onTapped: fade.pressed()
        }
        Hint {
            text: words.Accessible.name
            shown: pointer.hovered
        }
    }
}
