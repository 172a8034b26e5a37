import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// Writes the template of a session's folder, with what becomes of it in sight.
//
// The example's card and disk are those of the moment it opened: a card that is pulled meanwhile
// does not change what is being written.
Sheet {
    id: sheet

    required property var appModel
    required property var l10n

    property var example: ({})
    readonly property string previewPath: appModel.expandTemplate(editor.suffix, example)

    function present() {
        example = appModel.templateExample()
        editor.replaceAll(appModel.normalizedTemplate(appModel.folderTemplate))
        open()
        editor.forceActiveFocus()
    }

    title: l10n.folderTemplate
    // As its Cancel.
    closePolicy: T.Popup.CloseOnEscape
    width: Math.min(760, parent ? parent.width - 32 : 760)

    foot: [
        ActionButton {
            objectName: "cancel"
            text: sheet.l10n.cancel
            onClicked: sheet.close()
        },
        ActionButton {
            objectName: "default"
            text: sheet.l10n.defaultText
            onClicked: editor.replaceAll(sheet.appModel.defaultTemplate())
        },
        ActionButton {
            objectName: "done"
            kind: ActionButton.Prominent
            text: sheet.l10n.done
            onClicked: {
                sheet.appModel.saveTemplate(editor.suffix)
                sheet.close()
            }
        }
    ]

    Column {
        width: parent.width
        bottomPadding: 20
        spacing: 16

        Column {
            width: parent.width
            spacing: 6

            SuffixFieldHost {
                width: parent.width
                editor: SuffixEditor {
                    id: editor
                    objectName: "suffix"
                    font.pixelSize: DITTheme.body
                    activeFocusOnTab: true
                    Accessible.name: sheet.l10n.folderTemplate
                }
            }
            AppText {
                width: parent.width
                text: sheet.l10n.templateHint
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: DITTheme.secondary
            }
        }
        Flow {
            width: parent.width
            spacing: 8

            Repeater {
                model: sheet.appModel.templateTokens

                TokenButton {
                    onTapped: token => editor.insertToken(token)
                }
            }
            Repeater {
                model: sheet.appModel.templateSeparators

                TokenButton {
                    onTapped: token => editor.insertToken(token)
                }
            }
            ActionButton {
                objectName: "clear"
                height: DITTheme.smallControlHeight
                text: sheet.l10n.clear
                onClicked: editor.replaceAll("")
            }
        }
        FormSection {
            title: sheet.l10n.presets

            Repeater {
                model: sheet.appModel.templatePresets

                PresetRow {
                    width: parent.width
                    onChosen: whole => editor.replaceAll(whole)
                }
            }
        }
        FormSection {
            title: sheet.l10n.livePreview

            Text {
                objectName: "previewPath"
                width: parent.width
                text: sheet.previewPath
                textFormat: Text.PlainText
                wrapMode: Text.WrapAnywhere
                color: DITTheme.primary
                font.family: Appearance.fixedFontFamily
                font.pixelSize: DITTheme.subheadline
            }
        }
    }
}
