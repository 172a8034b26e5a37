import QtQuick
import QtQuick.Dialogs
import SlatewiseViews

// The folder dialog behind a `QuickFolderChooser`.
FolderDialog {
    id: dialog

    required property QuickFolderChooser chooser

    onAccepted: chooser.accept(selectedFolder)
    onRejected: chooser.cancel()

    function ask(message: string, prompt: string, start: url) {
        title = message
        acceptLabel = prompt
        currentFolder = start
        open()
    }
}
