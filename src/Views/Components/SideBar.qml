import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// How far a column that is too tall is scrolled.
T.ScrollBar {
    property bool needed: false

    policy: needed ? T.ScrollBar.AlwaysOn : T.ScrollBar.AlwaysOff
    padding: 2
    rightPadding: 5
    implicitWidth: 13
    visible: needed
    contentItem: Rectangle {
        implicitWidth: 6
        radius: width / 2
        color: DITTheme.scrollBar
    }
}
