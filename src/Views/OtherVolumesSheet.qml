import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// Volumes that the program takes for something else than the user does, or for nothing at all.
Sheet {
    id: sheet

    required property OtherVolumes volumes

    title: L10n.otherVolumes
    visible: volumes.isPresented
    closePolicy: T.Popup.CloseOnEscape

    onClosed: volumes.isPresented = false

    foot: ActionButton {
        objectName: "otherVolumesDone"
        kind: ActionButton.Prominent
        text: L10n.done
        onClicked: sheet.volumes.isPresented = false
    }

    Column {
        width: parent.width
        bottomPadding: 16
        spacing: 12

        AppText {
            width: parent.width
            text: sheet.volumes.count > 0 ? L10n.otherVolumesHint : L10n.noOtherVolumes
            wrapMode: Text.Wrap
            font.pixelSize: DITTheme.subheadline
            color: DITTheme.secondary
        }
        VolumeRows {
            objectName: "otherVolumeRows"
            width: parent.width
            volumes: sheet.volumes

            Repeater {
                model: sheet.volumes

                OtherVolumeRow {}
            }
        }
    }
}
