import QtQuick
import SlatewiseViews

// A name that comes with the program: skipped while it is on.
ToggleRow {
    id: row

    required property string name
    required property bool chosen

    objectName: "skip:" + name
    width: parent ? parent.width : 0
    implicitHeight: DITTheme.smallControlHeight
    text: name
    font.pixelSize: DITTheme.subheadline
    on: chosen
    onFlipped: (parent as ChoiceFlow).tap(name, row)
}
