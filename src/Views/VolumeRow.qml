import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import SlatewiseViews

// One card or disk. Its mark ticks it; a click elsewhere makes it the one that the unit picker works
// on. By keyboard: Space ticks, Return focuses, Delete takes it off the list.
T.ItemDelegate {
    id: row

    required property int index
    required property string volumeID
    required property string name
    required property string subtitle
    required property bool warns
    required property string path
    required property string past
    required property bool selected
    required property bool focused
    required property string ekip
    required property string unit
    required property bool needsUnit

    readonly property VolumeList list: ListView.view as VolumeList
    // Whether Tab stops here: one row of a list is enough.
    readonly property bool isTabStop: ListView.isCurrentItem
    readonly property bool hasKeyboard: activeFocus || mark.activeFocus || remove.activeFocus

    width: list ? list.width : 0
    // Known before anything is laid out: rows below are moved by it as soon as this one is there.
    implicitHeight: nameText.implicitHeight + 3 + subtitleText.implicitHeight + 3
                    + pathText.implicitHeight + 2 * padding
    padding: 10
    focusPolicy: isTabStop || activeFocus ? Qt.TabFocus : Qt.NoFocus
    text: name
    Accessible.name: spoken()
    Accessible.selected: selected
    Accessible.focusable: true

    onHasKeyboardChanged: {
        if (hasKeyboard)
            list.currentIndex = index
    }
    ListView.onRemove: {
        if (hasKeyboard)
            list.holdKeyboard()
    }
    onPressed: touch()
    onClicked: choose()
    Keys.forwardTo: PressKeys { button: row }
    Keys.onSpacePressed: event => toggleOnce(event)
    Keys.onDeletePressed: event => removeOnce(event)

    function spoken(): string {
        let words = name
        for (const word of [subtitle, past, path, ekip, unit, needsUnit ? L10n.selectUnit : ""])
            words += word ? ", " + word : ""
        return words
    }
    function touch() {
        list.currentIndex = index
        list.touched()
    }
    function choose() {
        list.volumes.focus(volumeID)
    }
    function toggle() {
        list.volumes.toggle(volumeID)
    }
    function take() {
        list.volumes.remove(volumeID)
    }
    function toggleOnce(event: KeyEvent) {
        if (!event.isAutoRepeat)
            toggle()
    }
    function removeOnce(event: KeyEvent) {
        if (!event.isAutoRepeat)
            take()
    }

    contentItem: RowLayout {
        id: line
        spacing: 10

        Tick {
            id: mark
            objectName: "mark"
            Layout.preferredWidth: 28
            Layout.preferredHeight: 28
            focusPolicy: row.isTabStop || activeFocus ? Qt.TabFocus : Qt.NoFocus
            Accessible.name: L10n.select + " " + row.name
            on: row.selected
            onPressed: row.touch()
            onClicked: row.toggle()

            contentItem: Item {
                Rectangle {
                    id: disc
                    anchors.centerIn: parent
                    width: 22
                    height: 22
                    radius: height / 2
                    color: row.selected ? DITTheme.accent
                                        : mark.hovered ? DITTheme.markHover
                                                       : DITTheme.clear
                    border.width: row.selected ? 0 : 2
                    border.color: mark.hovered ? DITTheme.markStrokeHover : DITTheme.markStroke

                    Icon {
                        anchors.centerIn: parent
                        visible: row.selected
                        symbol: "check"
                        size: 16
                        color: DITTheme.accentInk
                    }
                    FocusRing {
                        shown: mark.visualFocus
                    }
                }
            }
        }

        Column {
            Layout.fillWidth: true
            Layout.minimumWidth: 80
            // Takes what is left, however long the path: the badges go first.
            Layout.preferredWidth: 80
            spacing: 3

            AppText {
                id: nameText
                width: parent.width
                text: row.name
                font.weight: Font.Medium
                Accessible.ignored: true
            }
            AppText {
                id: subtitleText
                objectName: "subtitle"
                width: parent.width
                // That a card was offloaded before has all the room there is.
                text: row.past || row.subtitle
                font.pixelSize: DITTheme.caption
                color: row.warns ? DITTheme.dangerText : DITTheme.secondary
                Accessible.ignored: true
            }
            AppText {
                id: pathText
                objectName: "path"
                width: parent.width
                // Two cards of one name are told apart by the end of their paths.
                text: row.past && row.subtitle ? row.subtitle + "  ·  " + row.path : row.path
                font.pixelSize: DITTheme.caption2
                color: DITTheme.tertiary
                elide: Text.ElideMiddle
                Accessible.ignored: true
            }
        }

        Row {
            objectName: "unitPrompt"
            visible: row.needsUnit
            spacing: 6

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "exclamation-circle"
                size: DITTheme.title2
                color: DITTheme.danger
            }
            AppText {
                anchors.verticalCenter: parent.verticalCenter
                text: L10n.selectUnit
                font.pixelSize: DITTheme.callout
                font.weight: Font.DemiBold
                color: DITTheme.dangerText
                Accessible.ignored: true
            }
        }

        VolumeBadges {
            Layout.maximumWidth: implicitWidth
            Layout.fillWidth: true
            ekip: row.ekip
            unit: row.unit
        }

        Pressable {
            id: remove
            objectName: "remove"
            Layout.leftMargin: 6 - line.spacing
            Layout.preferredWidth: 24
            Layout.preferredHeight: 24
            focusPolicy: row.isTabStop || activeFocus ? Qt.TabFocus : Qt.NoFocus
            Accessible.name: L10n.removePath + " " + row.name
            onPressed: row.touch()
            onClicked: {
                if (visualFocus || row.list.settling.isOver())
                    row.take()
            }

            contentItem: Item {
                Icon {
                    anchors.centerIn: parent
                    symbol: "cross"
                    size: 14
                    color: remove.hovered || remove.visualFocus ? DITTheme.dangerText
                                                                : DITTheme.tertiary
                }
            }
            background: Rectangle {
                radius: height / 2
                color: remove.down ? DITTheme.removePressed
                     : remove.hovered ? DITTheme.removeHover : DITTheme.clear

                FocusRing {
                    gap: 0
                    shown: remove.visualFocus
                }
            }
            Hint {
                text: L10n.removePath
                shown: remove.hovered
            }
        }
    }

    background: Rectangle {
        radius: DITTheme.radius
        // A fill is a tick; a ring is the card that the unit picker works on.
        color: row.selected ? DITTheme.chosenFill
                            : row.hovered ? DITTheme.hover : DITTheme.clear
        border.width: row.focused ? 2 : 1
        border.color: row.focused ? DITTheme.accent
                    : row.selected ? DITTheme.chosenStroke : DITTheme.clear

        FocusRing {
            gap: -3
            shown: row.activeFocus
        }
    }
}
