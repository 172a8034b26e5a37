import QtQuick
import SlatewiseViews

// A group of settings under its heading.
Column {
    id: section

    property string title
    default property alias content: body.data

    width: parent ? parent.width : 0
    spacing: 6

    AppText {
        width: parent.width
        visible: text.length > 0
        text: section.title
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.DemiBold
        color: DITTheme.secondary
        Accessible.role: Accessible.Heading
    }
    Panel {
        width: parent.width
        implicitHeight: body.implicitHeight + 2 * 12

        Column {
            id: body
            x: 16
            y: 12
            width: parent.width - 32
            spacing: 8
        }
    }
}
