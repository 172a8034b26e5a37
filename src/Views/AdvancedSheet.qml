import QtQuick
import QtQuick.Layouts
import SlatewiseViews

// The settings. They work at once; Done keeps them for the next start.
Sheet {
    id: sheet

    required property var appModel
    required property var l10n

    title: l10n.advanced

    foot: ActionButton {
        objectName: "done"
        kind: ActionButton.Prominent
        text: sheet.l10n.done
        onClicked: {
            sheet.appModel.saveSettings()
            sheet.appModel.isAdvancedPresented = false
        }
    }

    Column {
        width: parent.width
        bottomPadding: 20
        spacing: 16

        FormSection {
            title: sheet.l10n.languageSection

            ChipStrip {
                objectName: "languages"
                x: -ringWidth
                width: parent.width
                hue: DITTheme.accent
                entries: sheet.appModel.languages
                isChosen: entry => entry.value === sheet.appModel.language
                onTapped: entry => sheet.appModel.language = entry.value
            }
        }
        FormSection {
            title: sheet.l10n.projectName

            NameField {
                objectName: "project"
                width: parent.width
                placeholderText: sheet.l10n.projectNamePlaceholder
                text: sheet.appModel.projectName
                onTextEdited: sheet.appModel.projectName = text
            }
        }
        FormSection {
            ToggleRow {
                objectName: "eject"
                width: parent.width
                text: sheet.l10n.ejectAfterSuccess
                on: sheet.appModel.ejectAfterSuccess
                onFlipped: on => sheet.appModel.ejectAfterSuccess = on
            }
            ToggleRow {
                objectName: "verifyOnly"
                width: parent.width
                text: sheet.l10n.verifyOnly
                on: sheet.appModel.verifyOnly
                onFlipped: on => sheet.appModel.verifyOnly = on
            }
        }
        FormSection {
            title: sheet.l10n.folderTemplate

            RowLayout {
                width: parent.width
                spacing: 12

                AppText {
                    objectName: "preview"
                    Layout.fillWidth: true
                    text: sheet.appModel.folderTemplatePreview
                    elide: Text.ElideMiddle
                    font.family: Appearance.fixedFontFamily
                    font.pixelSize: DITTheme.caption
                }
                ActionButton {
                    objectName: "edit"
                    text: sheet.l10n.edit
                    onClicked: editor.present()
                }
            }
        }
        SkipSection {
            appModel: sheet.appModel
            l10n: sheet.l10n
        }
        FormSection {
            title: sheet.l10n.reportsFolder

            AppText {
                width: parent.width
                text: sheet.l10n.reportsNote
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
            AppText {
                width: parent.width
                text: sheet.appModel.reportsFolderDisplay
                elide: Text.ElideMiddle
                font.family: Appearance.fixedFontFamily
                font.pixelSize: DITTheme.caption
            }
            Flow {
                width: parent.width
                spacing: 8

                ActionButton {
                    objectName: "chooseReports"
                    text: sheet.l10n.chooseFolder
                    onClicked: sheet.appModel.pickReportsFolder()
                }
                ActionButton {
                    objectName: "defaultReports"
                    enabled: !sheet.appModel.isDefaultReportsFolder
                    text: sheet.l10n.defaultText
                    onClicked: sheet.appModel.resetReportsFolder()
                }
                ActionButton {
                    objectName: "revealReports"
                    text: sheet.l10n.revealInFinder
                    onClicked: sheet.appModel.revealReportsFolder()
                }
            }
        }
    }

    FolderTemplateEditor {
        id: editor
        appModel: sheet.appModel
        l10n: sheet.l10n
    }
}
