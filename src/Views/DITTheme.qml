pragma Singleton
import QtQuick
import SlatewiseViews

// Every colour, size and duration of the window. Sizes stand on a rhythm of 8, halved inside small
// things; there is one type scale and no font size outside it.
QtObject {
    readonly property bool dark: Appearance.dark

    // What the colours are for, not what they look like.
    readonly property color accent: Qt.rgba(110 / 255, 78 / 255, 251 / 255, 1)
    readonly property color accentDeep: Qt.rgba(75 / 255, 44 / 255, 212 / 255, 1)
    readonly property color ekip: Qt.rgba(14 / 255, 148 / 255, 148 / 255, 1)
    readonly property color unit: Qt.rgba(224 / 255, 122 / 255, 46 / 255, 1)
    readonly property color success: Qt.rgba(18 / 255, 158 / 255, 80 / 255, 1)
    readonly property color info: Qt.rgba(28 / 255, 110 / 255, 214 / 255, 1)
    readonly property color danger: Qt.rgba(214 / 255, 45 / 255, 48 / 255, 1)

    // The same hues as text: deep enough on light, pale enough on dark to be read in the sun.
    readonly property color accentText: dark ? "#b3a4ff" : accentDeep
    readonly property color successText: dark ? "#4cd98a" : "#0a6a33"
    readonly property color infoText: dark ? "#8cc0ff" : "#12468c"
    readonly property color warningText: dark ? "#ffd08a" : "#7a4a00"
    readonly property color dangerText: dark ? "#ffa19a" : "#9f181c"
    readonly property color window: dark ? "#1a1920" : "#fcfbff"
    readonly property color sheet: dark ? "#24232b" : "#ffffff"
    readonly property color field: dark ? "#131217" : "#ffffff"
    readonly property color primary: dark ? "#f4f3f8" : "#17151d"
    readonly property color secondary: withOpacity(primary, 0.74)
    readonly property color tertiary: withOpacity(primary, 0.64)
    readonly property color panelFill: withOpacity(primary, 0.04)
    readonly property color panelStroke: withOpacity(primary, 0.08)
    // What a panel looks like in the window, for what must cover things on it.
    readonly property color panelGround: Qt.tint(window, panelFill)
    readonly property color panelGroundClear: withOpacity(panelGround, 0)
    readonly property color divider: withOpacity(primary, 0.12)
    readonly property color controlFill: withOpacity(primary, dark ? 0.1 : 0.05)
    readonly property color controlStroke: withOpacity(primary, dark ? 0.24 : 0.2)
    readonly property color hover: withOpacity(primary, 0.06)
    readonly property color pressed: withOpacity(primary, 0.12)
    readonly property color focusRing: dark ? "#a594ff" : accent
    readonly property color dim: Qt.rgba(0, 0, 0, dark ? 0.6 : 0.36)
    readonly property color clear: "transparent"
    readonly property color accentInk: "#ffffff"
    readonly property color hint: dark ? "#e9e7f2" : "#2b2933"
    readonly property color hintInk: dark ? "#17151d" : "#f4f3f8"
    readonly property color faintIcon: withOpacity(primary, 0.22)
    readonly property color logoStroke: withOpacity(primary, 0.28)
    readonly property color versionFill: withOpacity(secondary, 0.18 * secondary.a)
    readonly property color scrollBar: withOpacity(primary, 0.3)
    readonly property color switchOff: withOpacity(primary, 0.3)
    readonly property color knob: "#ffffff"
    readonly property color track: withOpacity(primary, 0.1)
    readonly property color failedTrack: withOpacity(danger, 0.25)
    readonly property color chosenFill: withOpacity(accent, 0.14)
    readonly property color chosenStroke: withOpacity(accent, 0.45)
    readonly property color markStroke: withOpacity(primary, 0.4)
    readonly property color markStrokeHover: withOpacity(primary, 0.6)
    readonly property color markHover: withOpacity(accent, 0.16)
    readonly property color destructiveFill: withOpacity(danger, 0.1)
    readonly property color destructiveStroke: withOpacity(danger, 0.5)
    readonly property color removeHover: withOpacity(danger, 0.12)
    readonly property color removePressed: withOpacity(danger, 0.24)
    // Over a button under the pointer.
    readonly property color shade: "#000000"

    // Pixels of text.
    readonly property int caption2: 11
    readonly property int caption: 12
    readonly property int subheadline: 13
    readonly property int callout: 14
    readonly property int body: 14
    readonly property int headline: 15
    readonly property int title3: 20
    readonly property int title2: 22
    readonly property int title: 26

    readonly property int radius: 10
    readonly property int sheetRadius: 14
    readonly property int controlRadius: 8
    readonly property int smallRadius: 6
    readonly property int linkRadius: 4
    readonly property int controlHeight: 32
    readonly property int smallControlHeight: 28
    readonly property real disabledOpacity: 0.45
    readonly property real asideOpacity: 0.75

    // Motion explains what came or grew; nothing moves for its own sake.
    readonly property int quick: 120
    readonly property int gentle: 180

    readonly property url logo: "qrc:/slatewise/AppLogo.png"

    function withOpacity(colour: color, opacity: real) : color {
        return Qt.rgba(colour.r, colour.g, colour.b, opacity)
    }

    // What can be read on a shape filled with a hue.
    function inkOn(hue: color) : color {
        const luminance = 0.2126 * hue.r ** 2.2 + 0.7152 * hue.g ** 2.2 + 0.0722 * hue.b ** 2.2
        return luminance > 0.18 ? "#14110d" : "#ffffff"
    }

    function badgeFill(hue: color) : color {
        return withOpacity(hue, 0.18)
    }
    function badgeStroke(hue: color) : color {
        return withOpacity(hue, 0.45)
    }
    function chipFill(hue: color, down: bool, hovered: bool) : color {
        return withOpacity(hue, down ? 0.3 : hovered ? 0.16 : 0.06)
    }
    function chipStroke(hue: color) : color {
        return withOpacity(hue, 0.55)
    }
    // Over a chosen chip under the pointer: away from its ink, so that the name stays legible.
    function chipShade(hue: color) : color {
        return Qt.colorEqual(inkOn(hue), "#ffffff") ? "#000000" : "#ffffff"
    }
    // The ground of a verdict.
    function verdictFill(hue: color) : color {
        return withOpacity(hue, dark ? 0.24 : Qt.colorEqual(hue, danger) ? 0.14 : 0.08)
    }

    // A hue as the text of a badge or a chip in that hue.
    function legible(hue: color) : color {
        return dark ? Qt.tint(hue, Qt.rgba(1, 1, 1, 0.5)) : Qt.darker(hue, 1.75)
    }
}
