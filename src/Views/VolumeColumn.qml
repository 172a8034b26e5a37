import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The cards, or the disks: what is there, and how to bring in more or put all of it aside.
Panel {
    id: column

    required property VolumeListModel volumes
    property string title
    property string symbol
    property string emptyText
    property string emptyHint
    // The size of what is ticked.
    property bool showsTotal: false
    property bool compact: false
    // No more is in sight than the head and what stands just below it.
    property bool tight: false
    readonly property int inset: compact ? 8 : 14
    // Too little room for words on every button.
    readonly property bool isNarrow: width < 440
    readonly property int heightOfTwoRows: Math.ceil(list.y + 2 * list.rowHeight + list.spacing + inset)

    // By the pointer, anywhere on a row.
    signal touched()
    // A row is new or lacks something, and the user is to see it.
    signal missed(Item row)

    // As wide as its head is without the word on the button for folders.
    implicitWidth: 20 + 10 + 80 + 10 + 36 + 10 + clearButton.implicitWidth + 2 * 14

    RowLayout {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: column.inset }
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
            text: column.isNarrow ? "" : L10n.chooseFolder
            help: column.isNarrow ? L10n.chooseFolder : ""
            Accessible.name: L10n.chooseFolder
            onClicked: column.volumes.pickFolder()
        }
        ActionButton {
            id: clearButton
            objectName: "clearAll"
            // One that is under the keyboard stays there.
            enabled: list.count > 0 || activeFocus
            text: L10n.clearAll
            help: L10n.clearAll
            onClicked: column.volumes.clear()
        }
    }

    RowLayout {
        id: total
        objectName: "total"
        anchors { left: parent.left; right: parent.right; top: header.bottom; margins: column.inset; topMargin: 4 }
        visible: column.showsTotal
        spacing: 6

        AppText {
            text: L10n.total
            font.pixelSize: DITTheme.caption
            font.weight: Font.Medium
            color: DITTheme.secondary
        }
        AppText {
            Layout.fillWidth: true
            text: column.volumes.totalText
            font.pixelSize: DITTheme.caption
            font.weight: Font.DemiBold
        }
    }

    Column {
        id: empty
        objectName: "empty"
        // At one height in both columns, however long their words and heads are.
        anchors {
            left: list.left; right: list.right; top: parent.top
            topMargin: column.tight ? total.y + total.height + 10 : parent.height * 0.36
        }
        visible: list.count === 0
        spacing: 8

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !column.tight
            symbol: column.symbol
            size: 40
            color: DITTheme.faintIcon
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

    VolumeList {
        id: list
        objectName: "list"
        anchors {
            left: parent.left; right: parent.right
            top: total.visible ? total.bottom : header.bottom; bottom: parent.bottom
            margins: column.inset; topMargin: column.compact ? 6 : 10
        }
        volumes: column.volumes
        edgeReach: 12
        Accessible.name: column.title
        refuge: chooseButton
        onTouched: column.touched()
        onMissed: row => column.missed(row)
        onKeyboardLeft: chooseButton.forceActiveFocus(Qt.TabFocusReason)

        delegate: VolumeRow {}
    }
    ListEdge {
        objectName: "above"
        anchors { left: list.left; right: list.right; top: list.top; topMargin: -list.anchors.topMargin }
        height: list.anchors.topMargin + reach
        reach: list.edgeReach
        count: list.hiddenAbove
        pointsUp: true
        onPressed: list.showPage(-1)
    }
    ListEdge {
        objectName: "below"
        anchors { left: list.left; right: list.right; bottom: parent.bottom; bottomMargin: 2 }
        height: column.inset - 2 + reach
        reach: list.edgeReach
        count: list.hiddenBelow
        onPressed: list.showPage(1)
    }
}
