import QtQuick
import SlatewiseViews

// The one window; the process ends with it.
Window {
    id: window

    required property AppModel appModel

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

    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: window.close()
    }
}
