import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// A sentence of what came out of a batch: calm when it is good, loud when it is not, and
// amber where it is good and there is still something to know.
AppText {
    required text
    required property int index
    required property bool isGood
    required property bool isNote
    required property bool isBad

    readonly property OutcomeColumn column: parent as OutcomeColumn

    Layout.fillWidth: true
    visible: column && index < column.most
    wrapMode: Text.Wrap
    maximumLineCount: 2
    font.pixelSize: DITTheme.subheadline
    font.weight: isBad ? Font.DemiBold : Font.Normal
    color: isBad ? DITTheme.dangerText : isNote ? DITTheme.warningText
         : isGood ? DITTheme.successText : DITTheme.primary
}
