import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// How far a copy is read again, and what that showed: the colours and signs of an offload.
Rectangle {
    id: block

    required property CopyCheck check
    property string note

    readonly property bool succeeded: check.standing === BatchControl.Succeeded
    readonly property bool failed: check.standing === BatchControl.Failed
    readonly property color hue: check.isDoubtful ? DITTheme.warningText
                                 : succeeded ? DITTheme.success : failed ? DITTheme.danger
                                                                         : DITTheme.primary
    readonly property bool settled: succeeded || failed

    visible: check.title.length > 0 || note.length > 0
    implicitHeight: lines.implicitHeight + 2 * 14
    height: implicitHeight
    radius: DITTheme.radius
    color: settled ? DITTheme.verdictFill(hue) : DITTheme.panelFill
    border.width: settled ? 3 : 1
    border.color: settled ? hue : DITTheme.panelStroke

    ColumnLayout {
        id: lines
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 8

        AppText {
            Layout.fillWidth: true
            visible: text.length > 0
            text: block.note
            color: DITTheme.dangerText
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.fillWidth: true
            visible: block.check.title.length > 0
            spacing: 10

            AppText {
                objectName: "checkPercent"
                visible: block.check.isBusy
                text: block.check.percentText
                font.pixelSize: DITTheme.headline
                font.weight: Font.DemiBold
            }
            Icon {
                Layout.preferredWidth: 22
                Layout.preferredHeight: 22
                visible: block.settled
                symbol: block.succeeded ? "check-circle" : "cross-octagon"
                size: 22
                color: block.check.isDoubtful ? DITTheme.warningText
                       : block.succeeded ? DITTheme.successText : DITTheme.dangerText
            }
            AppText {
                objectName: "checkTitle"
                Layout.fillWidth: true
                text: block.check.title
                font.pixelSize: DITTheme.callout
                font.weight: block.settled ? Font.DemiBold : Font.Normal
                color: block.failed ? DITTheme.dangerText : DITTheme.primary
                wrapMode: Text.Wrap
                maximumLineCount: 3
                Accessible.role: Accessible.AlertMessage
            }
        }
        ProgressTrack {
            Layout.fillWidth: true
            visible: block.check.isBusy
            fraction: block.check.fraction
        }
        // More than a few scroll, by wheel or with the cursor keys.
        ScrollArea {
            id: area
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(implicitHeight, 12 * DITTheme.caption)
            visible: block.check.findings.length > 0

            function follow(cursor: rect) {
                if (cursor.y < contentY)
                    contentY = cursor.y
                else if (cursor.y + cursor.height > contentY + height)
                    contentY = cursor.y + cursor.height - height
            }

            TextEdit {
                objectName: "findings"
                width: parent.width
                readOnly: true
                selectByMouse: true
                selectByKeyboard: true
                activeFocusOnTab: true
                text: block.check.findings
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.WrapAnywhere
                color: DITTheme.primary
                selectionColor: DITTheme.accent
                selectedTextColor: DITTheme.accentInk
                font.pixelSize: DITTheme.caption
                Accessible.name: block.check.title

                onCursorRectangleChanged: area.follow(cursorRectangle)
            }
        }
    }
}
