import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// What is never copied: the names that come with the program, and the user's own.
FormSection {
    id: section

    required property var appModel
    required property var l10n

    title: l10n.skipHeader

    function addName() {
        appModel.addSkipName(field.text)
        field.clear()
    }

    // The rows come anew; the keyboard goes on to what stands in the place of the one that is gone.
    function removeName(name, index, byKeyboard) {
        appModel.removeSkipName(name)
        if (!byKeyboard)
            return
        const next = names.itemAt(Math.min(index, names.count - 1))
        const heir = next ? next.button : field
        heir.forceActiveFocus(Qt.TabFocusReason)
    }

    AppText {
        width: parent.width
        text: section.l10n.skipIntro
        wrapMode: Text.Wrap
        font.pixelSize: DITTheme.caption
        color: DITTheme.secondary
    }
    AppText {
        width: parent.width
        topPadding: 4
        text: section.l10n.defaultSystemJunk
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.Medium
    }
    Column {
        width: parent.width

        // By position, so that a flipped switch stays where it is, and with it the keyboard.
        Repeater {
            model: section.appModel.defaultSkipNames.length

            ToggleRow {
                required property int index
                readonly property var entry: section.appModel.defaultSkipNames[index] ?? ({})

                objectName: "skip:" + (entry.name ?? "")
                width: parent.width
                implicitHeight: DITTheme.smallControlHeight
                text: entry.name ?? ""
                font.pixelSize: DITTheme.subheadline
                on: entry.skipped === true
                onFlipped: on => section.appModel.setDefaultSkip(entry.name, on)
            }
        }
    }
    AppText {
        width: parent.width
        topPadding: 4
        visible: section.appModel.extraExcludes.length > 0
        text: section.l10n.userAdded
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.Medium
    }
    Repeater {
        id: names
        model: section.appModel.extraExcludes

        RowLayout {
            required property string modelData
            required property int index
            readonly property alias button: removeButton

            width: parent.width
            spacing: 8

            AppText {
                Layout.fillWidth: true
                text: parent.modelData
                font.pixelSize: DITTheme.subheadline
            }
            DestructiveButton {
                id: removeButton
                objectName: "remove:" + parent.modelData
                Layout.preferredHeight: DITTheme.smallControlHeight
                text: section.l10n.remove
                Accessible.name: text + " " + parent.modelData
                onClicked: section.removeName(parent.modelData, parent.index, activeFocus)
            }
        }
    }
    RowLayout {
        width: parent.width
        spacing: 8

        NameField {
            id: field
            objectName: "skipField"
            Layout.fillWidth: true
            placeholderText: section.l10n.skipNamePlaceholder
            onAccepted: section.addName()
        }
        ActionButton {
            objectName: "addSkip"
            text: section.l10n.add
            onClicked: section.addName()
        }
    }
    AppText {
        width: parent.width
        text: section.l10n.skipFooter
        wrapMode: Text.Wrap
        font.pixelSize: DITTheme.caption
        color: DITTheme.secondary
    }
}
