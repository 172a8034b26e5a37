import QtQuick
import SlatewiseViews

// The one screen: cards, disks, units, Copy. Shows the model and calls it; decides nothing.
//
// When the window is too low for everything, the lists and the unit picker scroll. How the offload
// stands and the button that stops it are always in sight.
FocusScope {
    id: root

    required property AppModel appModel

    // A laptop's screen: what explains gives way to what is worked with.
    readonly property bool compact: height < 800
    // Half a laptop's screen, or all of it at twice the size.
    readonly property bool tight: height < 560
    readonly property int sidePadding: 20
    readonly property int topPadding: compact ? 8 : 18
    readonly property int gap: compact ? 8 : 16
    readonly property int leastListHeight: Math.max(cards.heightOfTwoRows, disks.heightOfTwoRows)

    implicitWidth: 2 * sidePadding + 16 + 2 * Math.max(cards.implicitWidth, disks.implicitWidth)

    // Takes the keyboard away from the name fields and hands it back to the window.
    function resignNameFieldFocus() {
        picker.resignNameFieldFocus()
    }

    // Who is typing keeps the field in sight.
    function show(row: Item) {
        if (!(Window.activeFocusItem instanceof TextInput))
            upper.reveal(row)
    }

    Component.onCompleted: resignNameFieldFocus()

    Binding {
        target: L10n
        property: "language"
        value: root.appModel.language
    }

    HeaderBar {
        id: header
        anchors {
            left: parent.left; right: parent.right; top: parent.top
            leftMargin: root.sidePadding; rightMargin: root.sidePadding
        }
        compact: root.compact
        appModel: root.appModel
    }
    Divider {
        id: upperRule
        anchors { left: parent.left; right: parent.right; top: header.bottom }
    }

    ScrollArea {
        id: upper
        objectName: "upper"
        anchors {
            left: parent.left; right: parent.right
            top: upperRule.bottom; bottom: status.top; bottomMargin: root.gap
        }
        sidePadding: root.sidePadding

        Item {
            width: parent.width
            height: Math.max(upper.height, root.topPadding + root.leastListHeight + root.gap
                                           + picker.implicitHeight)
            // What is changed now is for the next batch.
            opacity: root.appModel.batch.isBusy ? DITTheme.asideOpacity : 1

            VolumeColumn {
                id: cards
                objectName: "cards"
                anchors { left: parent.left; top: parent.top; topMargin: root.topPadding; bottom: picker.top; bottomMargin: root.gap }
                width: (parent.width - 16) / 2
                volumes: root.appModel.cards
                title: L10n.cameraCard
                symbol: "card"
                emptyText: L10n.noCardMounted
                showsTotal: true
                compact: root.compact
                tight: root.tight
                onTouched: root.resignNameFieldFocus()
                onMissed: row => root.show(row)
            }
            VolumeColumn {
                id: disks
                objectName: "disks"
                anchors { right: parent.right; top: cards.top; bottom: cards.bottom }
                width: cards.width
                volumes: root.appModel.destinations
                title: L10n.destinationDisk
                symbol: "drive"
                emptyText: L10n.noDestination
                emptyHint: L10n.noDiskPickFolder
                compact: root.compact
                tight: root.tight
                onTouched: root.resignNameFieldFocus()
                onMissed: row => root.show(row)
            }
            CameraPicker {
                id: picker
                objectName: "picker"
                anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
                height: implicitHeight
                picking: root.appModel.units
                // A verdict takes room, too.
                compact: root.compact || (status.settled && root.height < 960)
            }
        }
    }

    StatusBlock {
        id: status
        objectName: "status"
        anchors {
            left: parent.left; right: parent.right; bottom: actions.top
            leftMargin: root.sidePadding; rightMargin: root.sidePadding; bottomMargin: root.gap
        }
        compact: root.compact
        tight: root.tight
        batch: root.appModel.batch
    }
    ActionRow {
        id: actions
        objectName: "actions"
        anchors {
            left: parent.left; right: parent.right; bottom: lowerRule.top
            leftMargin: root.sidePadding; rightMargin: root.sidePadding; bottomMargin: root.compact ? 10 : 18
        }
        appModel: root.appModel
    }
    Divider {
        id: lowerRule
        anchors { left: parent.left; right: parent.right; bottom: footer.top }
    }
    FooterBar {
        id: footer
        anchors {
            left: parent.left; right: parent.right; bottom: parent.bottom
            leftMargin: root.sidePadding; rightMargin: root.sidePadding
        }
        appModel: root.appModel
    }

    // Made when they are first asked for: the start of the program does not pay for them. The checker
    // doubts that what stands outside is known inside, which it is.
    OnDemand {
        isWanted: root.appModel.history.isPresented
        sourceComponent: HistorySheet { appModel: root.appModel } // qmllint disable unqualified
    }
    OnDemand {
        isWanted: root.appModel.otherVolumes.isPresented
        sourceComponent: OtherVolumesSheet { volumes: root.appModel.otherVolumes } // qmllint disable unqualified
    }
    OnDemand {
        isWanted: root.appModel.settings.isPresented
        sourceComponent: AdvancedSheet { appModel: root.appModel } // qmllint disable unqualified
    }
}
