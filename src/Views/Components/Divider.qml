import QtQuick
import SlatewiseViews

Rectangle {
    implicitHeight: 1
    color: DITTheme.divider
}
