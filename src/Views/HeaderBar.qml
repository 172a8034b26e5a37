import QtQuick
import SlatewiseViews

// Who this is, which production it works for, and how it stands with the reporting service.
Item {
    id: header

    required property AppModel appModel
    property bool compact: false

    implicitHeight: 44 + 2 * (compact ? 4 : 12)

    Rectangle {
        id: logo
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        width: 44
        height: 44
        radius: DITTheme.radius
        color: DITTheme.clear

        Image {
            anchors.fill: parent
            source: DITTheme.logo
            sourceSize { width: 44 * Screen.devicePixelRatio; height: 44 * Screen.devicePixelRatio }
            smooth: true
            Accessible.ignored: true
        }
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: DITTheme.clear
            border.width: 1
            border.color: DITTheme.logoStroke
        }
    }

    AppText {
        id: name
        anchors.left: logo.right
        anchors.leftMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        text: header.appModel.appName
        font.pixelSize: DITTheme.title2
        font.weight: Font.DemiBold
    }
    Rectangle {
        anchors.fill: version
        anchors.margins: -3
        anchors.leftMargin: -8
        anchors.rightMargin: -8
        radius: height / 2
        color: DITTheme.versionFill
    }
    AppText {
        id: version
        anchors.left: name.right
        anchors.leftMargin: 10 + 8
        anchors.baseline: name.baseline
        text: header.appModel.appVersion
        font.pixelSize: DITTheme.subheadline
        color: DITTheme.secondary
    }
    AppText {
        id: project
        objectName: "projectName"
        anchors.left: version.right
        anchors.leftMargin: 8 + 10
        anchors.right: service.left
        anchors.rightMargin: 10
        anchors.baseline: name.baseline
        visible: text.length > 0
        text: header.appModel.settings.projectName
        font.pixelSize: DITTheme.title
        font.weight: Font.DemiBold
        color: DITTheme.accentText
    }
    AppText {
        id: service
        anchors.right: parent.right
        anchors.baseline: name.baseline
        width: Math.min(implicitWidth, header.width * 0.32)
        text: header.appModel.saasLine
        font.pixelSize: DITTheme.caption
        color: DITTheme.secondary
        horizontalAlignment: Text.AlignRight
    }
}
