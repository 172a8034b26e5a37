import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// How the offload stands. Read from across the truck: success is green with a tick, failure red with
// a cross, and each colours the whole block; blue says that nothing was copied. Below stands what
// became of each pair and what it met, until the next batch begins.
Rectangle {
    id: block

    required property BatchControl batch
    property bool compact: false
    // No room for lines of pairs either.
    property bool tight: false
    readonly property int inset: compact ? 8 : 14

    readonly property bool succeeded: batch.standing === BatchControl.Succeeded
    readonly property bool hashed: batch.standing === BatchControl.Hashed
    readonly property bool failed: batch.standing === BatchControl.Failed
    readonly property color hue: succeeded ? DITTheme.success : hashed ? DITTheme.info
                               : failed ? DITTheme.danger : DITTheme.primary
    // The same hue as text.
    readonly property color ink: succeeded ? (DITTheme.dark ? DITTheme.successText : DITTheme.success)
                               : hashed ? (DITTheme.dark ? DITTheme.infoText : DITTheme.info)
                               : DITTheme.dark ? DITTheme.dangerText : DITTheme.danger
    readonly property bool settled: succeeded || hashed || failed
    // More is for the sheet.
    readonly property int mostPairs: tight ? 0 : compact && (failed || batch.problems.count > 0) ? 3 : 4
    // A green batch with a note is never shown as if it had none.
    readonly property int mostProblems: tight ? 0 : !compact ? 3 : failed ? 0 : 1
    readonly property int untold: !batch.hasVerdict ? 0 : Math.max(0, batch.pairs.count - mostPairs)
                                + Math.max(0, batch.problems.count - mostProblems)

    function showOutcome() {
        outcome.active = true
        const sheet = outcome.item as OutcomeSheet
        sheet.present()
    }

    implicitHeight: lines.implicitHeight + 2 * inset
    radius: DITTheme.radius
    color: settled ? DITTheme.verdictFill(hue) : DITTheme.panelFill
    border.width: settled ? 3 : 1
    border.color: settled ? hue : DITTheme.panelStroke
    Behavior on color {
        ColorAnimation { duration: DITTheme.gentle }
    }

    ColumnLayout {
        id: lines
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: block.inset }
        spacing: block.compact ? 4 : 8

        RowLayout {
            Layout.fillWidth: true
            Layout.preferredHeight: 28
            spacing: 10

            AppText {
                objectName: "percent"
                Layout.minimumWidth: implicitWidth
                text: block.batch.percentText
                elide: Text.ElideNone
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
                color: block.ink
            }
            AppText {
                objectName: "successText"
                visible: block.succeeded
                text: L10n.progressSuccess
                font.pixelSize: DITTheme.title3
                font.weight: Font.Bold
                color: block.ink
            }
            AppText {
                objectName: "hashedText"
                Layout.leftMargin: 6
                visible: block.hashed
                text: L10n.nothingCopied
                font.pixelSize: DITTheme.title3
                font.weight: Font.Bold
                color: block.ink
            }
            Icon {
                objectName: "failureMark"
                Layout.preferredWidth: 26
                Layout.preferredHeight: 26
                Layout.leftMargin: 6
                visible: block.failed
                symbol: "cross-octagon"
                size: 26
                color: block.ink
            }
            Icon {
                objectName: "notesMark"
                Layout.preferredWidth: 22
                Layout.preferredHeight: 22
                visible: block.batch.hasVerdict && block.tight && !block.failed
                         && block.batch.problems.count > 0
                symbol: "exclamation-circle"
                size: 22
                color: DITTheme.warningText
            }
            AppText {
                id: pair
                objectName: "failedPair"
                Layout.fillWidth: true
                visible: text.length > 0
                text: block.batch.failedPair
                font.pixelSize: DITTheme.headline
                font.weight: Font.Bold
                color: DITTheme.dangerText
            }
            AppText {
                objectName: "pace"
                visible: !pair.visible
                Layout.fillWidth: true
                text: block.batch.pace
                font.pixelSize: DITTheme.callout
                color: DITTheme.secondary
                horizontalAlignment: Text.AlignRight
            }
            AppText {
                objectName: "untold"
                visible: block.untold > 0 && (!block.tight || block.failed)
                text: L10n.andMore.replace("%1", block.untold)
                font.pixelSize: DITTheme.subheadline
                color: DITTheme.secondary
            }
            ActionButton {
                objectName: "showOutcome"
                Layout.preferredHeight: DITTheme.smallControlHeight
                visible: block.untold > 0 || block.batch.hasMore
                text: L10n.showAll
                onClicked: block.showOutcome()
            }
        }
        ProgressTrack {
            objectName: "bar"
            Layout.fillWidth: true
            visible: !(block.compact && block.failed)
            fraction: block.batch.fraction
            hue: block.succeeded || block.hashed ? block.hue : DITTheme.accent
            // A failure leaves no bar behind: only what went through is full, whatever colours one sees.
            color: block.failed ? DITTheme.failedTrack : DITTheme.track
        }
        AppText {
            objectName: "title"
            Layout.fillWidth: true
            text: block.batch.title
            font.pixelSize: DITTheme.callout
            font.weight: block.settled ? Font.DemiBold : Font.Normal
            color: block.failed || block.batch.isRefused ? DITTheme.dangerText : DITTheme.primary
            wrapMode: Text.Wrap
            maximumLineCount: 3
            Accessible.role: Accessible.AlertMessage
        }
        AppText {
            objectName: "doNotPull"
            Layout.fillWidth: true
            visible: text.length > 0
            text: block.batch.doNotPull
            font.pixelSize: DITTheme.callout
            font.weight: Font.DemiBold
            color: DITTheme.warningText
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
        }
        AppText {
            objectName: "advice"
            Layout.fillWidth: true
            visible: text.length > 0
            text: block.batch.advice
            font.pixelSize: DITTheme.callout
            wrapMode: Text.Wrap
        }
        AppText {
            objectName: "lastOffload"
            Layout.fillWidth: true
            visible: text.length > 0
            text: block.batch.lastOffload
            font.pixelSize: DITTheme.caption
            wrapMode: Text.Wrap
            maximumLineCount: 3
            color: DITTheme.secondary
        }
        OutcomeList {
            objectName: "pairs"
            Layout.fillWidth: true
            visible: block.batch.hasVerdict && most > 0 && block.batch.pairs.count > 0
            lines: block.batch.pairs
            most: block.mostPairs
        }
        OutcomeList {
            objectName: "problems"
            Layout.fillWidth: true
            visible: block.batch.hasVerdict && most > 0 && block.batch.problems.count > 0
            lines: block.batch.problems
            most: block.mostProblems
        }
    }

    Loader {
        id: outcome
        active: false
        sourceComponent: OutcomeSheet { batch: block.batch } // qmllint disable unqualified
    }
}
