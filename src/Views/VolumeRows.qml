import QtQuick
import SlatewiseViews

// Where lines of volumes stand, which call their model through it.
Column {
    required property OtherVolumes volumes

    spacing: 8
}
