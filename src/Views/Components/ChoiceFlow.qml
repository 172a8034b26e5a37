import QtQuick

// Lays out one item for each of several choices, and says which of them was meant.
Flow {
    property string tappedValue
    property Item tappedItem: null

    signal tapped()

    // For the items.
    function tap(value: string, item: Item) {
        tappedValue = value
        tappedItem = item
        tapped()
    }
}
