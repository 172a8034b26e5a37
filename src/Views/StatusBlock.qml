import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// How the offload stands. Read from across the truck: success is green with a tick, failure red with
// a cross, and each colours the whole block.
Rectangle {
    id: block

    required property BatchControl batch

    readonly property bool succeeded: batch.standing === BatchControl.Succeeded
    readonly property bool failed: batch.standing === BatchControl.Failed
    readonly property color hue: succeeded ? DITTheme.success : failed ? DITTheme.danger
                                                                       : DITTheme.primary
    readonly property bool settled: succeeded || failed

    implicitHeight: lines.implicitHeight + 2 * 14
    radius: DITTheme.radius
    color: settled ? DITTheme.verdictFill(hue) : DITTheme.panelFill
    border.width: settled ? 3 : 1
    border.color: settled ? hue : DITTheme.panelStroke
    Behavior on color {
        ColorAnimation { duration: DITTheme.gentle }
    }

    ColumnLayout {
        id: lines
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 8

        RowLayout {
            Layout.fillWidth: true
            Layout.preferredHeight: 28
            spacing: 10

            AppText {
                objectName: "percent"
                text: block.batch.percentText
                font.pixelSize: DITTheme.title3
                font.weight: Font.DemiBold
            }
            Icon {
                objectName: "successMark"
                Layout.preferredWidth: 26
                Layout.preferredHeight: 26
                Layout.leftMargin: 6
                visible: block.succeeded
                symbol: "check-circle"
                size: 26
                color: DITTheme.dark ? DITTheme.successText : DITTheme.success
            }
            AppText {
                objectName: "successText"
                visible: block.succeeded
                text: L10n.progressSuccess
                font.pixelSize: DITTheme.title3
                font.weight: Font.Bold
                color: DITTheme.dark ? DITTheme.successText : DITTheme.success
            }
            Icon {
                objectName: "failureMark"
                Layout.preferredWidth: 26
                Layout.preferredHeight: 26
                Layout.leftMargin: 6
                visible: block.failed
                symbol: "cross-octagon"
                size: 26
                color: DITTheme.dark ? DITTheme.dangerText : DITTheme.danger
            }
            Item {
                Layout.fillWidth: true
            }
        }
        ProgressTrack {
            objectName: "bar"
            Layout.fillWidth: true
            fraction: block.batch.fraction
            hue: block.succeeded ? DITTheme.success : DITTheme.accent
            // A failure leaves no bar behind: only what went through is full, whatever colours one sees.
            color: block.failed ? DITTheme.failedTrack : DITTheme.track
        }
        AppText {
            objectName: "title"
            Layout.fillWidth: true
            text: block.batch.title
            font.pixelSize: DITTheme.callout
            font.weight: block.settled ? Font.DemiBold : Font.Normal
            color: block.failed ? DITTheme.dangerText : DITTheme.primary
            wrapMode: Text.Wrap
            maximumLineCount: 2
            Accessible.role: Accessible.AlertMessage
        }
    }
}
