import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The crew and the unit of a card.
RowLayout {
    id: badges

    property string ekip
    property string unit

    spacing: 5

    InfoBadge {
        objectName: "ekipBadge"
        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
        text: badges.ekip
        hue: DITTheme.ekip
    }
    InfoBadge {
        objectName: "unitBadge"
        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
        text: badges.unit
        hue: DITTheme.unit
    }
}
