import QtQuick
import SlatewiseViews

// The one window; the process ends with it.
Window {
    id: window

    required property var appModel

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

    Shortcut {
        sequences: [StandardKey.Quit, StandardKey.Close]
        onActivated: window.close()
    }
}
