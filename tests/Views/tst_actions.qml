import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Actions"

    function test_copy_and_stop() {
        model.canCopy = false
        mouseClick(find("copy"))
        compare(model.calls, [])
        // A missing unit does not hold the button back: pressing it tells.
        model.canCopy = true
        model.cards.setProperty(0, "unit", "")
        mouseClick(find("copy"))
        compare(model.calls, [["startCopy"]])
        model.isBusy = true
        verify(!find("copy").visible && find("stop").visible)
        mouseClick(find("stop"))
        compare(model.calls[1], ["cancelCopy"])
    }

    function test_how_it_stands_data() {
        return [
            { tag: "under way", succeed: false, fail: false },
            { tag: "success", succeed: true, fail: false },
            { tag: "failure", succeed: false, fail: true }
        ]
    }
    function test_how_it_stands(data) {
        model.progressFraction = data.succeed ? 1 : 0.25
        model.progressDidSucceed = data.succeed
        model.progressDidFail = data.fail
        compare(find("successMark").visible, data.succeed)
        compare(find("successText").visible, data.succeed)
        compare(find("failureMark").visible, data.fail)
        // What is seen from afar: the hue of the block's edge.
        const edge = find("status").border.color
        verify(data.succeed === (edge.g > edge.r * 2), "green " + edge)
        verify(data.fail === (edge.r > edge.g * 2), "red " + edge)
        compare(find("percent").text, data.succeed ? "100%" : "25%")
    }

    function luminance(colour) {
        const linear = part => part <= 0.04045 ? part / 12.92 : Math.pow((part + 0.055) / 1.055, 2.4)
        return 0.2126 * linear(colour.r) + 0.7152 * linear(colour.g) + 0.0722 * linear(colour.b)
    }
    function contrast(over, under) {
        const [high, low] = [luminance(over), luminance(under)].sort((a, b) => b - a)
        return (high + 0.05) / (low + 0.05)
    }

    // In the sun, on a laptop: what is written must be read.
    function test_texts_stand_out_from_their_ground() {
        const panel = Qt.tint(DITTheme.window, DITTheme.panelFill)
        const laid = (colour, ground) => Qt.tint(ground, colour)
        const pairs = [
            ["secondary", laid(DITTheme.secondary, panel), panel],
            ["tertiary", laid(DITTheme.tertiary, panel), panel],
            ["danger", DITTheme.dangerText, laid(DITTheme.withOpacity(DITTheme.danger, 0.14), panel)],
            ["accent", DITTheme.accentText, panel],
            ["on accent", Qt.color("white"), DITTheme.accent]
        ]
        for (const hue of [DITTheme.ekip, DITTheme.unit]) {
            const badge = laid(DITTheme.withOpacity(hue, 0.18), panel)
            pairs.push(["badge " + hue, DITTheme.legible(hue), badge])
            pairs.push(["chip " + hue, Qt.color(DITTheme.inkOn(hue)), hue])
        }
        for (const [what, over, under] of pairs)
            verify(contrast(over, under) >= 4.5, what + ": " + contrast(over, under).toFixed(2))
    }

    function test_both_languages_fit_data() {
        const cases = []
        for (const language of ["en", "tr"]) {
            for (const width of [984, 880])
                cases.push({ tag: language + " " + width, language: language, width: width })
        }
        return cases
    }
    function test_both_languages_fit(data) {
        model.language = data.language
        test.width = data.width
        waitForRendering(root)
        function look(item) {
            if (item.kind !== undefined && item.visible) {
                verify(item.width >= item.implicitWidth, item.text)
                const place = item.mapToItem(root, 0, 0)
                verify(place.x >= 0 && place.x + item.width <= root.width, item.text)
            }
            for (const child of Array.from(item.children))
                look(child)
        }
        look(root)
        test.width = 984
        verify(root.implicitWidth <= 880, "least width " + root.implicitWidth)
    }

    function test_a_low_window_keeps_the_buttons_in_sight() {
        test.height = 520
        waitForRendering(root)
        const copy = find("copy")
        verify(copy.mapToItem(root, 0, copy.height).y <= root.height)
        field("units").forceActiveFocus(Qt.TabFocusReason)
        const bottom = field("units").mapToItem(root, 0, field("units").height).y
        verify(bottom <= find("status").y, "what has the keyboard is in sight")
        test.height = 900
    }
}
