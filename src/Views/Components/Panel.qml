import QtQuick
import SlatewiseViews

// The ground on which things belong together.
Rectangle {
    color: DITTheme.panelFill
    radius: DITTheme.radius
    border.width: 1
    border.color: DITTheme.panelStroke
}
