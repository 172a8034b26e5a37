import QtQuick
import QtQuick.Templates as T
import SlatewiseViews

// One choice among few, in the hue of what is chosen. Takes the keyboard by Tab and arrows, never by
// a click.
T.RadioButton {
    id: chip

    property color hue: DITTheme.accent
    property bool chosen: false

    readonly property color foreground: chosen ? DITTheme.inkOn(hue) : DITTheme.legible(hue)

    implicitHeight: DITTheme.controlHeight
    implicitWidth: Math.min(label.implicitWidth, 200) + 28
    leftPadding: 14
    rightPadding: 14
    // What is chosen is for others to say, not for the click.
    checked: chosen
    autoExclusive: false
    onToggled: checked = Qt.binding(() => chosen)
    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Keys.forwardTo: PressKeys { button: chip }
    font.pixelSize: DITTheme.subheadline
    font.weight: chosen ? Font.Bold : Font.DemiBold

    contentItem: AppText {
        id: label
        text: chip.text
        font: chip.font
        color: chip.foreground
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: height / 2
        color: chip.chosen ? chip.hue
                           : DITTheme.chipFill(chip.hue, chip.down, chip.hovered)
        border.width: 1
        border.color: chip.chosen ? chip.hue : DITTheme.chipStroke(chip.hue)

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: DITTheme.chipShade(chip.hue)
            opacity: !chip.chosen ? 0 : chip.down ? 0.2 : chip.hovered ? 0.1 : 0
        }
        FocusRing {
            gap: 1
            shown: chip.activeFocus
        }
    }
}
