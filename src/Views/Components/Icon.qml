import QtQuick
import QtQuick.Controls.impl
import SlatewiseViews

// One of our own drawings, in the colour of the text around it.
IconImage {
    property string symbol
    property int size: 16

    width: size
    height: size
    sourceSize { width: size; height: size }
    source: symbol ? Qt.resolvedUrl("../icons/" + symbol + ".svg") : ""
    color: DITTheme.primary
    Accessible.ignored: true
}
