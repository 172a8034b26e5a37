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
    required property string path
    required property bool selected
    required property bool focused
    required property string ekip
    required property string unit
    required property bool needsUnit

    // The column's texts.
    property var l10n
    // Whether Tab stops here: one row of a list is enough.
    property bool isTabStop: false
    // Since rows last changed places.
    property Settling settling: Settling {}
    readonly property bool hasKeyboard: activeFocus || mark.activeFocus || remove.activeFocus

    signal toggled()
    signal chosen()
    signal removed()
    // By the pointer, anywhere on the row.
    signal touched()

    // Known before anything is laid out: rows below are moved by it as soon as this one is there.
    implicitHeight: nameText.implicitHeight + 3 + subtitleText.implicitHeight + 3
                    + pathText.implicitHeight + 2 * padding
    padding: 10
    focusPolicy: isTabStop || activeFocus ? Qt.TabFocus : Qt.NoFocus
    text: name
    Accessible.name: [name, subtitle, ekip, unit, needsUnit ? l10n.selectUnit : ""].filter(
                         part => part.length > 0).join(", ")
    Accessible.selected: selected
    Accessible.focusable: true

    onPressed: touched()
    onClicked: chosen()
    Keys.forwardTo: PressKeys { button: row }
    Keys.onSpacePressed: event => {
        if (!event.isAutoRepeat)
            toggled()
    }
    Keys.onDeletePressed: event => {
        if (!event.isAutoRepeat)
            removed()
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
            Accessible.name: row.l10n.select + " " + row.name
            on: row.selected
            onPressed: row.touched()
            onClicked: row.toggled()

            contentItem: Item {
                Rectangle {
                    id: disc
                    anchors.centerIn: parent
                    width: 22
                    height: 22
                    radius: 11
                    color: row.selected ? DITTheme.accent
                                        : mark.hovered ? DITTheme.withOpacity(DITTheme.accent, 0.16)
                                                       : "transparent"
                    border.width: row.selected ? 0 : 2
                    border.color: DITTheme.withOpacity(DITTheme.primary, mark.hovered ? 0.6 : 0.4)

                    Icon {
                        anchors.centerIn: parent
                        visible: row.selected
                        symbol: "check"
                        size: 16
                        color: "#ffffff"
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
                width: parent.width
                text: row.subtitle
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
                Accessible.ignored: true
            }
            AppText {
                id: pathText
                width: parent.width
                text: row.path
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
                text: row.l10n.selectUnit
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
            Accessible.name: row.l10n.removePath + " " + row.name
            onPressed: row.touched()
            onClicked: {
                if (visualFocus || row.settling.isOver())
                    row.removed()
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
                radius: 12
                color: remove.down ? DITTheme.withOpacity(DITTheme.danger, 0.24)
                     : remove.hovered ? DITTheme.withOpacity(DITTheme.danger, 0.12) : "transparent"

                FocusRing {
                    gap: 0
                    shown: remove.visualFocus
                }
            }
            Hint {
                text: row.l10n.removePath
                shown: remove.hovered
            }
        }
    }

    background: Rectangle {
        radius: DITTheme.radius
        color: row.focused ? DITTheme.withOpacity(DITTheme.accent, 0.14)
                           : row.hovered ? DITTheme.hover : "transparent"
        border.width: 1
        border.color: row.selected ? DITTheme.withOpacity(DITTheme.accent, 0.45)
                                   : "transparent"

        FocusRing {
            gap: -3
            shown: row.activeFocus
        }
    }
}
