import QtQuick
import QtQuick.Dialogs

// The folder dialog behind a `QuickFolderChooser`.
FolderDialog {
    id: dialog

    required property var chooser

    onAccepted: chooser.accept(selectedFolder)
    onRejected: chooser.cancel()

    function ask(message, prompt, start) {
        title = message
        acceptLabel = prompt
        currentFolder = start
        open()
    }
}
