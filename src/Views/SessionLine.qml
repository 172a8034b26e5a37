import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import SlatewiseViews

// One session of the history. A click, Return or Space chooses it.
T.ItemDelegate {
    id: row

    required property int index
    required property string sessionID
    required property string name
    required property string facts
    required property string verdict
    required property bool isVerified
    required property bool hasFailed
    required property string check
    required property bool isCheckGood
    required property bool isCheckDoubtful
    required property bool chosen

    readonly property SessionHistory history: ListView.view ? ListView.view.model as SessionHistory : null
    readonly property color hue: isVerified ? DITTheme.success : hasFailed ? DITTheme.danger
                                                                           : DITTheme.info

    width: ListView.view ? ListView.view.width - ListView.view.rightMargin : 0
    implicitHeight: line.implicitHeight + 2 * padding
    padding: 10
    focusPolicy: ListView.isCurrentItem || activeFocus ? Qt.TabFocus : Qt.NoFocus
    text: name
    Accessible.name: spoken()
    Accessible.selected: chosen
    Accessible.focusable: true

    function spoken(): string {
        let words = name
        for (const word of [facts, verdict, check])
            words += word ? ", " + word : ""
        return words
    }

    onActiveFocusChanged: {
        if (activeFocus)
            ListView.view.currentIndex = index
    }
    onClicked: {
        ListView.view.currentIndex = index
        history.choose(sessionID)
    }
    Keys.forwardTo: PressKeys { button: row }

    contentItem: RowLayout {
        id: line
        spacing: 12

        Column {
            Layout.fillWidth: true
            spacing: 3

            AppText {
                width: parent.width
                text: row.name
                font.weight: Font.Medium
                Accessible.ignored: true
            }
            AppText {
                width: parent.width
                text: row.facts
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
                Accessible.ignored: true
            }
            AppText {
                width: parent.width
                visible: text.length > 0
                text: row.check
                font.pixelSize: DITTheme.caption
                color: !row.isCheckGood ? DITTheme.dangerText
                                        : row.isCheckDoubtful ? DITTheme.warningText
                                                              : DITTheme.successText
                Accessible.ignored: true
            }
        }
        Rectangle {
            Layout.preferredWidth: word.implicitWidth + 2 * 10
            Layout.preferredHeight: word.implicitHeight + 2 * 4
            radius: height / 2
            color: DITTheme.badgeFill(row.hue)
            border.width: 1
            border.color: DITTheme.badgeStroke(row.hue)

            AppText {
                id: word
                anchors.centerIn: parent
                text: row.verdict
                font.pixelSize: DITTheme.caption2
                font.weight: Font.DemiBold
                color: DITTheme.legible(row.hue)
                Accessible.ignored: true
            }
        }
    }

    background: Rectangle {
        radius: DITTheme.radius
        color: row.chosen ? DITTheme.chosenFill : row.hovered ? DITTheme.hover : DITTheme.clear
        border.width: 1
        border.color: row.chosen ? DITTheme.chosenStroke : DITTheme.clear

        FocusRing {
            gap: -3
            shown: row.visualFocus
        }
    }
}
