import QtQuick
import SlatewiseViews

// All that is told of the last batch, to be read, selected and copied.
Sheet {
    id: sheet

    required property BatchControl batch

    function present() {
        open()
    }

    title: L10n.whatHappened
    width: Math.min(820, parent ? parent.width - 32 : 820)

    foot: [
        ActionButton {
            objectName: "copyText"
            text: L10n.copyText
            onClicked: {
                words.selectAll()
                words.copy()
                words.deselect()
            }
        },
        ActionButton {
            objectName: "closeOutcome"
            kind: ActionButton.Prominent
            text: L10n.done
            onClicked: sheet.close()
        }
    ]

    TextEdit {
        id: words
        objectName: "outcomeText"
        width: parent.width
        bottomPadding: 20
        readOnly: true
        selectByMouse: true
        activeFocusOnTab: true
        text: sheet.batch.report
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        color: DITTheme.primary
        selectionColor: DITTheme.accent
        selectedTextColor: DITTheme.accentInk
        font.pixelSize: DITTheme.body
        Accessible.name: sheet.title
    }
}
