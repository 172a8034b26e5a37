import QtQuick
import SlatewiseViews

// The one window; the process ends with it.
Window {
    id: window

    required property var appModel
    // Asks for a folder when the model wants one.
    property var folderChooser: null

    title: appModel.appName
    color: DITTheme.window
    minimumWidth: Math.max(800, root.implicitWidth)
    minimumHeight: 480

    SimpleRootView {
        id: root
        anchors.fill: parent
        focus: true
        appModel: window.appModel
    }

    Connections {
        target: window.folderChooser
        function onAsked(message, prompt, start) {
            // Made at the first question: loading a dialog costs more than the whole window.
            if (!folderDialog.item)
                folderDialog.setSource("FolderChooserDialog.qml", { chooser: window.folderChooser })
            folderDialog.item.ask(message, prompt, start)
        }
    }
    Loader {
        id: folderDialog
    }

    Shortcut {
        sequences: [StandardKey.Quit, StandardKey.Close]
        onActivated: window.close()
    }
}
