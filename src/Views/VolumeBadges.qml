import QtQuick
import SlatewiseViews

// The crew and the unit of a card.
Row {
    id: badges

    property string ekip
    property string unit

    spacing: 5

    InfoBadge {
        objectName: "ekipBadge"
        text: badges.ekip
        hue: DITTheme.ekip
    }
    InfoBadge {
        objectName: "unitBadge"
        text: badges.unit
        hue: DITTheme.unit
    }
}
