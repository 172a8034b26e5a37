import QtQuick

// Something that is made when it is first wanted, and stays.
Loader {
    required property bool isWanted

    active: false
    onIsWantedChanged: active = active || isWanted
    Component.onCompleted: active = isWanted
}
