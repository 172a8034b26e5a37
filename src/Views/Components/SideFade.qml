import QtQuick
import SlatewiseViews

// Where a line goes on to the right.
Rectangle {
    gradient: Gradient {
        orientation: Gradient.Horizontal
        GradientStop { position: 0; color: DITTheme.panelGroundClear }
        GradientStop { position: 1; color: DITTheme.panelGround }
    }
}
