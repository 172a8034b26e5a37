import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The settings. They work at once; Done keeps them for the next start.
Sheet {
    id: sheet

    required property AppModel appModel
    readonly property SettingsForm settings: appModel.settings
    readonly property ReportsFolder reports: appModel.reports

    title: L10n.advanced
    visible: settings.isPresented
    onVisibleChanged: {
        if (visible)
            skipped.forgetTyped()
    }

    foot: ActionButton {
        objectName: "done"
        kind: ActionButton.Prominent
        text: L10n.done
        onClicked: {
            sheet.settings.save()
            sheet.settings.isPresented = false
        }
    }

    Column {
        width: parent.width
        bottomPadding: 20
        spacing: 16

        FormSection {
            title: L10n.languageSection

            ChipStrip {
                id: languages
                objectName: "languages"
                x: -ringWidth
                width: parent.width
                hue: DITTheme.accent
                choices: sheet.appModel.languages
                onTapped: sheet.appModel.language = languages.tappedValue
            }
        }
        FormSection {
            title: L10n.projectName

            NameField {
                objectName: "project"
                width: parent.width
                placeholderText: L10n.projectNamePlaceholder
                text: sheet.settings.projectName
                onTextEdited: sheet.settings.projectName = text
            }
        }
        FormSection {
            ToggleRow {
                objectName: "eject"
                width: parent.width
                text: L10n.ejectAfterSuccess
                on: sheet.settings.ejectAfterSuccess
                onFlipped: sheet.settings.ejectAfterSuccess = !on
            }
            ToggleRow {
                objectName: "verifyOnly"
                width: parent.width
                text: L10n.verifyOnly
                on: sheet.settings.verifyOnly
                onFlipped: sheet.settings.verifyOnly = !on
            }
        }
        FormSection {
            ToggleRow {
                objectName: "hashList"
                width: parent.width
                text: L10n.writesHashList
                on: sheet.settings.writesHashList
                onFlipped: sheet.settings.writesHashList = !on
            }
            AppText {
                width: parent.width
                text: L10n.writesHashListHint
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
            RowLayout {
                width: parent.width
                visible: sheet.settings.writesHashList
                spacing: 8

                NameField {
                    objectName: "listAuthor"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    placeholderText: L10n.listAuthorPlaceholder
                    text: sheet.settings.listAuthor
                    onTextEdited: sheet.settings.listAuthor = text
                }
                NameField {
                    objectName: "listRole"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    placeholderText: L10n.listRolePlaceholder
                    text: sheet.settings.listRole
                    onTextEdited: sheet.settings.listRole = text
                }
                NameField {
                    objectName: "listLocation"
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    placeholderText: L10n.listLocationPlaceholder
                    text: sheet.settings.listLocation
                    onTextEdited: sheet.settings.listLocation = text
                }
            }
        }
        FormSection {
            title: L10n.folderTemplate

            RowLayout {
                width: parent.width
                spacing: 12

                AppText {
                    objectName: "preview"
                    Layout.fillWidth: true
                    text: sheet.appModel.pathTemplate.preview
                    elide: Text.ElideMiddle
                    font.family: Appearance.fixedFontFamily
                    font.pixelSize: DITTheme.caption
                    color: sheet.appModel.pathTemplate.isUsable ? DITTheme.primary : DITTheme.dangerText
                }
                ActionButton {
                    objectName: "edit"
                    text: L10n.edit
                    onClicked: editor.present()
                }
            }
        }
        SkipSection {
            id: skipped
            settings: sheet.settings
        }
        FormSection {
            title: L10n.reportsFolder

            AppText {
                width: parent.width
                text: L10n.reportsNote
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
            AppText {
                width: parent.width
                text: sheet.reports.path
                elide: Text.ElideMiddle
                font.family: Appearance.fixedFontFamily
                font.pixelSize: DITTheme.caption
            }
            Flow {
                width: parent.width
                spacing: 8

                ActionButton {
                    objectName: "chooseReports"
                    text: L10n.chooseFolder
                    onClicked: sheet.reports.pick()
                }
                ActionButton {
                    objectName: "defaultReports"
                    enabled: !sheet.reports.isDefault
                    text: L10n.defaultText
                    onClicked: sheet.reports.reset()
                }
                ActionButton {
                    objectName: "showReports"
                    text: L10n.showInFolder
                    onClicked: sheet.reports.reveal()
                }
            }
        }
    }

    FolderTemplateEditor {
        id: editor
        pathTemplate: sheet.appModel.pathTemplate
    }
}
