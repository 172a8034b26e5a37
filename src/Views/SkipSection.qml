import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// What is never copied: the names that come with the program, and the user's own.
FormSection {
    id: section

    required property SettingsForm settings

    title: L10n.skipHeader

    function forgetTyped() {
        field.clear()
    }
    function addName() {
        settings.addSkipName(field.text)
        field.clear()
    }

    // The keyboard goes on to what stands in the place of the row that is gone.
    function removeTapped() {
        const row = added.tappedItem as SkippedName
        const place = row.index
        const hadKeyboard = row.hasKeyboard
        settings.removeSkipName(row.name)
        if (!hadKeyboard)
            return
        const heir = names.itemAt(Math.min(place, names.count - 1)) as SkippedName
        if (heir)
            heir.takeKeyboard()
        else
            field.forceActiveFocus(Qt.TabFocusReason)
    }

    AppText {
        width: parent.width
        text: L10n.skipIntro
        wrapMode: Text.Wrap
        font.pixelSize: DITTheme.caption
        color: DITTheme.secondary
    }
    AppText {
        width: parent.width
        topPadding: 4
        text: L10n.defaultSystemJunk
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.Medium
    }
    ChoiceFlow {
        width: parent.width
        onTapped: section.settings.setDefaultSkip(tappedValue, !(tappedItem as SkipToggle).on)

        Repeater {
            model: section.settings.defaultSkipNames

            SkipToggle {}
        }
    }
    AppText {
        width: parent.width
        topPadding: 4
        visible: names.count > 0
        text: L10n.userAdded
        font.pixelSize: DITTheme.subheadline
        font.weight: Font.Medium
    }
    ChoiceFlow {
        id: added
        width: parent.width
        visible: names.count > 0
        spacing: 8
        onTapped: section.removeTapped()

        Repeater {
            id: names
            model: section.settings.extraExcludes

            SkippedName {}
        }
    }
    RowLayout {
        width: parent.width
        spacing: 8

        NameField {
            id: field
            objectName: "skipField"
            Layout.fillWidth: true
            placeholderText: L10n.skipNamePlaceholder
            onAccepted: section.addName()
        }
        ActionButton {
            objectName: "addSkip"
            enabled: field.text.trim().length > 0 || activeFocus
            text: L10n.add
            onClicked: section.addName()
        }
    }
    AppText {
        width: parent.width
        text: L10n.skipFooter
        wrapMode: Text.Wrap
        font.pixelSize: DITTheme.caption
        color: DITTheme.secondary
    }
}
