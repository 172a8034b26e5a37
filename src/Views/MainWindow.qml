import QtQuick
import SlatewiseViews

// The one window; the process ends with it.
Window {
    id: window

    required property AppModel appModel
    // Asks for a folder when the model wants one.
    property QuickFolderChooser folderChooser: null

    title: appModel.appName
    color: DITTheme.window
    minimumWidth: Math.max(700, root.implicitWidth)
    minimumHeight: 400

    SimpleRootView {
        id: root
        anchors.fill: parent
        focus: true
        appModel: window.appModel
    }

    Connections {
        target: window.folderChooser
        function onAsked(message: string, prompt: string, start: url) {
            // Made at the first question: loading a dialog costs more than the whole window.
            if (!folderDialog.item)
                folderDialog.setSource("FolderChooserDialog.qml", { chooser: window.folderChooser })
            (folderDialog.item as FolderChooserDialog).ask(message, prompt, start)
        }
    }
    Loader {
        id: folderDialog
    }

    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: window.close()
    }
}
