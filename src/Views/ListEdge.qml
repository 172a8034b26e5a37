import QtQuick
import SlatewiseViews

// Where a list goes on: it fades, and says how much more there is. It reaches over no more of the rows
// than their padding, so that it strikes through no name.
Item {
    id: edge

    property int count: 0
    property bool pointsUp: false

    signal pressed()

    // Over the rows; the rest of the edge lies beside them.
    property int reach: 0

    visible: count > 0

    Rectangle {
        width: parent.width
        height: edge.reach
        y: edge.pointsUp ? edge.height - height : 0
        rotation: edge.pointsUp ? 180 : 0
        gradient: Gradient {
            GradientStop { position: 0; color: DITTheme.panelGroundClear }
            GradientStop { position: 0.8; color: DITTheme.panelGround }
        }
    }
    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        y: edge.pointsUp ? 0 : parent.height - height
        width: words.implicitWidth + 20
        height: words.implicitHeight + 4
        radius: height / 2
        color: DITTheme.sheet
        border.width: 1
        border.color: DITTheme.controlStroke

        AppText {
            id: words
            objectName: "words"
            anchors.centerIn: parent
            text: L10n.rowsBelow.replace("%1", edge.count)
            font.pixelSize: DITTheme.caption2
            font.weight: Font.DemiBold
        }
        TapHandler {
            onTapped: edge.pressed()
        }
    }
}
