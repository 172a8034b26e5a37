import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The cards, or the disks: what is there, and how to bring in more or put all of it aside.
Panel {
    id: column

    required property var l10n
    required property var volumes
    property string title
    property string symbol
    property string emptyText
    property string emptyHint
    // The size of what is ticked; without it there is no such line.
    property string totalText
    property bool showsTotal: false

    signal chooseFolder()
    signal clearAll()
    signal toggled(string volumeID)
    signal chosen(string volumeID)
    signal removed(string volumeID)
    signal touched()

    implicitWidth: header.implicitWidth + 2 * 14

    RowLayout {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 10

        Icon {
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
            symbol: column.symbol
            size: 20
        }
        AppText {
            Layout.fillWidth: true
            text: column.title
            font.pixelSize: DITTheme.headline
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        ActionButton {
            id: chooseButton
            objectName: "chooseFolder"
            kind: ActionButton.Plain
            symbol: "folder"
            text: column.l10n.chooseFolder
            onClicked: column.chooseFolder()
        }
        ActionButton {
            objectName: "clearAll"
            text: column.l10n.clearAll
            help: column.l10n.clearAll
            onClicked: column.clearAll()
        }
    }

    RowLayout {
        id: total
        objectName: "total"
        anchors { left: parent.left; right: parent.right; top: header.bottom; margins: 14; topMargin: 4 }
        visible: column.showsTotal
        spacing: 6

        AppText {
            text: column.l10n.total
            font.pixelSize: DITTheme.caption
            font.weight: Font.Medium
            color: DITTheme.secondary
        }
        AppText {
            Layout.fillWidth: true
            text: column.totalText
            font.pixelSize: DITTheme.caption
            font.weight: Font.DemiBold
        }
    }

    Column {
        id: empty
        objectName: "empty"
        anchors { left: list.left; right: list.right; verticalCenter: list.verticalCenter }
        visible: list.count === 0
        spacing: 8

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            symbol: column.symbol
            size: 40
            color: DITTheme.withOpacity(DITTheme.primary, 0.22)
        }
        AppText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: column.emptyText
            color: DITTheme.secondary
        }
        AppText {
            width: parent.width
            visible: text.length > 0
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: column.emptyHint
            font.pixelSize: DITTheme.caption
            color: DITTheme.secondary
        }
    }

    ListView {
        id: list
        objectName: "list"
        anchors {
            left: parent.left; right: parent.right
            top: total.visible ? total.bottom : header.bottom; bottom: parent.bottom
            margins: 14; topMargin: 10
        }
        spacing: 8
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        model: column.volumes
        Accessible.role: Accessible.List
        Accessible.name: column.title

        // Volumes come and go by themselves, and one that is removed pulls up the next.
        Settling {
            id: settling
        }
        Connections {
            target: column.volumes
            function onRowsMoved() { settling.restart() }
        }

        // A list that was empty has no current row yet, and Tab would pass it by.
        onCountChanged: {
            if (currentIndex < 0 && count > 0)
                currentIndex = 0
            settling.restart()
        }

        // The keyboard stays in the column when the row that had it goes.
        function keepKeyboard() {
            forceLayout()
            if (currentItem)
                currentItem.forceActiveFocus(Qt.TabFocusReason)
            else
                chooseButton.forceActiveFocus(Qt.TabFocusReason)
        }

        delegate: VolumeRow {
            width: ListView.view.width
            l10n: column.l10n
            isTabStop: ListView.isCurrentItem
            settling: settling
            onHasKeyboardChanged: {
                if (hasKeyboard)
                    list.currentIndex = index
            }
            ListView.onRemove: {
                if (hasKeyboard)
                    Qt.callLater(list.keepKeyboard)
            }
            onToggled: column.toggled(volumeID)
            onChosen: column.chosen(volumeID)
            onRemoved: column.removed(volumeID)
            onTouched: {
                list.currentIndex = index
                column.touched()
            }
        }

        add: Transition {
            NumberAnimation { property: "opacity"; from: 0; to: 1; duration: DITTheme.gentle }
        }
        displaced: Transition {
            NumberAnimation { properties: "y"; duration: DITTheme.gentle; easing.type: Easing.OutCubic }
            NumberAnimation { property: "opacity"; to: 1; duration: DITTheme.quick }
        }
    }
}
