import QtQuick
import SlatewiseViews

// Where to find the people who make this.
Item {
    id: footer

    required property AppModel appModel

    implicitHeight: link.implicitHeight + 2 * 10

    Pressable {
        id: link
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        implicitWidth: line.implicitWidth
        implicitHeight: line.implicitHeight
        text: footer.appModel.websiteLabel
        onClicked: Qt.openUrlExternally(footer.appModel.websiteURL)

        contentItem: Row {
            id: line
            spacing: 6

            Text {
                text: link.text
                textFormat: Text.PlainText
                font.pixelSize: DITTheme.caption
                font.weight: Font.Medium
                font.underline: link.hovered
                color: DITTheme.secondary
            }
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "link"
                size: 12
                color: DITTheme.secondary
            }
        }
        background: Item {
            FocusRing {
                radius: DITTheme.linkRadius
                shown: link.visualFocus
            }
        }
        Hint {
            text: link.text
            shown: link.hovered
        }
        HoverHandler {
            cursorShape: Qt.PointingHandCursor
        }
    }
}
