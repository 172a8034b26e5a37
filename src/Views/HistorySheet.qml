import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// What was offloaded on this machine, latest first. The buttons below are about the chosen session;
// one that is read again shows how far it is, and its verdict.
Sheet {
    id: sheet

    required property AppModel appModel
    readonly property SessionHistory history: appModel.history

    title: L10n.history
    visible: history.isPresented
    closePolicy: history.check.isBusy ? T.Popup.NoAutoClose : T.Popup.CloseOnEscape
    width: Math.min(860, parent ? parent.width - 32 : 860)

    onClosed: history.isPresented = false

    foot: [
        ActionButton {
            objectName: "showReport"
            enabled: sheet.history.hasChosen
            text: L10n.showReport
            onClicked: sheet.history.showReport()
        },
        ActionButton {
            objectName: "showFolder"
            enabled: sheet.history.canShowFolder
            text: L10n.showFolder
            onClicked: sheet.history.showFolder()
        },
        ActionButton {
            objectName: "verifyAgain"
            visible: !sheet.history.check.isBusy
            enabled: sheet.history.canVerify && !sheet.appModel.batch.isBusy
            text: L10n.verifyAgain
            onClicked: sheet.history.verifyAgain()
        },
        DestructiveButton {
            objectName: "stopCheck"
            height: DITTheme.controlHeight
            visible: sheet.history.check.isBusy
            text: L10n.stop
            onClicked: sheet.history.check.cancel()
        },
        ActionButton {
            objectName: "historyDone"
            kind: ActionButton.Prominent
            text: L10n.done
            onClicked: sheet.history.isPresented = false
        }
    ]

    Column {
        width: parent.width
        bottomPadding: 16
        spacing: 12

        NameField {
            objectName: "historySearch"
            width: parent.width
            placeholderText: L10n.searchHistory
            text: sheet.history.search
            onTextEdited: sheet.history.search = text
        }
        AppText {
            width: parent.width
            visible: list.count === 0 && !sheet.history.isUnread
            text: sheet.history.search.length > 0 ? L10n.nothingFound : L10n.nothingInHistory
            color: DITTheme.secondary
            horizontalAlignment: Text.AlignHCenter
            topPadding: 24
            bottomPadding: 24
        }
        ListView {
            id: list
            objectName: "sessions"
            width: parent.width
            // What is left of the window, and not more than there is.
            height: Math.min(contentHeight,
                             Math.max(report.visible ? 96 : 160, (sheet.parent ? sheet.parent.height : 900) - 300
                                           - (report.visible ? report.height + 12 : 0)
                                           - (rest.visible ? rest.height + 12 : 0)))
            visible: count > 0
            model: sheet.history
            spacing: 4
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            // Clear of the bar.
            rightMargin: bar.needed ? bar.implicitWidth : 0
            Accessible.role: Accessible.List

            T.ScrollBar.vertical: SideBar {
                id: bar
                needed: list.contentHeight > list.height
            }
            delegate: SessionLine {}
        }
        AppText {
            id: rest
            width: parent.width
            visible: text.length > 0
            text: sheet.history.rest
            font.pixelSize: DITTheme.caption
            color: DITTheme.secondary
            horizontalAlignment: Text.AlignHCenter
        }
        CheckReport {
            id: report
            width: parent.width
            check: sheet.history.check
            note: sheet.history.note
        }
    }
}
