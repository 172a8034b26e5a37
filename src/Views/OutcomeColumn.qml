import QtQuick.Layouts

// Where sentences of an outcome stand, of which the first few are shown.
ColumnLayout {
    property int most: 3

    spacing: 4
}
