import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// Writes the template of a session's folder, with what becomes of it in sight.
//
// The example's card and disk are those of the moment it opened: a card that is pulled meanwhile
// does not change what is being written.
Sheet {
    id: sheet

    required property PathTemplate pathTemplate

    readonly property string previewPath: pathTemplate.expand(editor.suffix)
    readonly property string objection: pathTemplate.objection(editor.suffix)

    function present() {
        pathTemplate.holdExample()
        editor.replaceAll(pathTemplate.normalized(pathTemplate.text))
        open()
        editor.forceActiveFocus()
    }

    title: L10n.folderTemplate
    // As its Cancel.
    closePolicy: T.Popup.CloseOnEscape
    width: Math.min(760, parent ? parent.width - 32 : 760)

    foot: [
        ActionButton {
            objectName: "cancel"
            text: L10n.cancel
            onClicked: sheet.close()
        },
        ActionButton {
            objectName: "default"
            text: L10n.defaultText
            onClicked: editor.replaceAll(sheet.pathTemplate.standardText)
        },
        ActionButton {
            objectName: "done"
            kind: ActionButton.Prominent
            enabled: sheet.objection.length === 0
            text: L10n.done
            onClicked: {
                sheet.pathTemplate.save(editor.suffix)
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
                    Accessible.name: L10n.folderTemplate
                }
            }
            AppText {
                objectName: "objection"
                width: parent.width
                text: sheet.objection || L10n.templateHint
                wrapMode: Text.Wrap
                font.pixelSize: DITTheme.caption
                color: sheet.objection ? DITTheme.dangerText : DITTheme.secondary
            }
        }
        ChoiceFlow {
            id: pieces
            width: parent.width
            spacing: 8
            onTapped: editor.insertToken(pieces.tappedValue)

            Repeater {
                model: sheet.pathTemplate.tokens

                TokenButton {}
            }
            ActionButton {
                objectName: "clear"
                height: DITTheme.smallControlHeight
                text: L10n.clear
                onClicked: editor.replaceAll("")
            }
        }
        FormSection {
            title: L10n.presets

            ChoiceFlow {
                id: presets
                width: parent.width
                spacing: 8
                onTapped: editor.replaceAll(presets.tappedValue)

                Repeater {
                    model: sheet.pathTemplate.presets

                    PresetRow {}
                }
            }
        }
        FormSection {
            title: L10n.livePreview

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
