import QtQuick

// The line that chips stand on, in their common hue.
ChoiceFlow {
    property color hue
    // Where Tab stops.
    property int currentIndex: 0

    // A chip wants to be in sight.
    signal wanted(Item chip)
    // Another one is chosen.
    signal chosenChanged()
    // The chip at that place wants the keyboard.
    signal stepped(int index)
}
