import QtQuick
import QtTest
import SlatewiseViews

ViewCase {
    id: test
    name: "Actions"

    function test_copy_and_stop() {
        model.cards.clear()
        mouseClick(find("copy"))
        compare(model.batch.standing, BatchControl.Resting)
        // A missing unit does not hold the button back: pressing it tells.
        stage.choose("A001", "")
        mouseClick(find("copy"))
        verify(row("cards", 0).needsUnit)
        stage.choose("A001", "CamA")
        mouseClick(find("copy"))
        verify(model.batch.isBusy)
        verify(!find("copy").visible && find("stop").visible)
        const turn = find("copy").parent.turn
        turn.duration = 60000
        mouseClick(find("stop"))
        wait(Qt.styleHints.mouseDoubleClickInterval + 50)
        verify(model.batch.isBusy, "the second click of two was meant for Copy")
        turn.duration = 0
        tryVerify(() => turn.isOver())
        mouseClick(find("stop"))
        tryCompare(model.batch, "standing", BatchControl.Failed)
    }

    function test_the_keyboard_goes_from_copy_to_stop_and_back() {
        find("copy").forceActiveFocus(Qt.TabFocusReason)
        desktop.holdKey(root.Window.window, Qt.Key_Return, 5)
        verify(model.batch.isBusy)
        tryVerify(() => find("stop").activeFocus)
        // What was ticked still is.
        model.batch.cancel()
        tryVerify(() => find("copy").activeFocus)
    }

    function test_a_key_that_is_held_down_acts_once() {
        const remove = find("delete", find("crews"))
        for (const name of ["a", "b", "c"]) {
            model.units.newCrewName = name
            model.units.addCrew()
        }
        for (const [index, key] of [Qt.Key_Return, Qt.Key_Space].entries()) {
            remove.forceActiveFocus(Qt.TabFocusReason)
            desktop.holdKey(root.Window.window, key, 5)
            compare(model.units.crews.rowCount(), 4 - index)
        }
        mouseDoubleClickSequence(remove)
        compare(model.units.crews.rowCount(), 2)
        row("cards", 0).forceActiveFocus(Qt.TabFocusReason)
        desktop.holdKey(root.Window.window, Qt.Key_Space, 4)
        verify(!row("cards", 0).selected)
        desktop.holdKey(root.Window.window, Qt.Key_Delete, 5)
        compare(names("cards"), ["B004", "SES_MIX_02"])
    }

    // A card's unit may be far along the strip, as is one that was just added.
    function test_the_chosen_chip_is_in_sight() {
        const strip = find("chips", find("units"))
        for (const name of ["Steadicam", "Underwater", "Crash Cam", "Witness"]) {
            model.units.newUnitName = name
            model.units.addUnit()
        }
        const last = model.units.units.rowCount() - 1
        tryVerify(() => {
            const chip = strip.itemAtIndex(last)
            return chip !== null && strip.contentX > 0
                && chip.mapToItem(strip, chip.width, 0).x <= strip.width
        })
        const before = find("moreBefore", strip)
        verify(before.visible && !find("moreBehind", strip).visible)
        // Each that is not wholly clear of the edge is told of, and a click leads there.
        const isClear = index => strip.itemAtIndex(index).mapToItem(before, 0, 0).x >= before.width - 1
        verify(!isClear(before.count - 1) && isClear(before.count))
        compare(find("words", before).text, "+" + before.count)
        const [place, unit] = [strip.contentX, row("cards", 0).unit]
        mouseClick(find("words", before))
        tryVerify(() => strip.contentX < place && find("moreBehind", strip).count > 0)
        compare(row("cards", 0).unit, unit, "no chip below it is meant")
    }

    // However fast or slowly the news come in.
    function test_the_bar_keeps_up_data() {
        return [{ tag: "each picture", pause: 16, steps: 20 },
                { tag: "slow disk", pause: 250, steps: 4 }]
    }
    function test_the_bar_keeps_up(data) {
        const bar = find("bar")
        const filled = () => find("fill", bar).width / bar.width
        for (let step = 1; step <= data.steps; ++step) {
            stage.copying(step / data.steps)
            wait(data.pause)
        }
        verify(filled() > 0.1, "stands at " + filled())
        verify(!find("percent").truncated && find("percent").width >= find("percent").implicitWidth)
        // Reading back has its share, and so have the three pairs to come.
        tryVerify(() => Math.abs(filled() - 0.85 / 4) < 0.001)
        stage.fail()
        tryVerify(() => filled() === 0)
    }

    function test_how_it_stands_data() {
        return [
            { tag: "under way", succeed: false, fail: false, hash: false },
            { tag: "success", succeed: true, fail: false, hash: false },
            { tag: "failure", succeed: false, fail: true, hash: false },
            { tag: "hashed only", succeed: false, fail: false, hash: true }
        ]
    }
    function test_how_it_stands(data) {
        model.settings.verifyOnly = data.hash
        compare(find("copy").text, data.hash ? "Hash only" : "Copy")
        verify(find("title", find("status")).text.endsWith("press " + find("copy").text + "."))
        stage.copying(0.5)
        if (data.succeed || data.hash)
            stage.succeed()
        if (data.fail)
            stage.fail()
        compare(find("successMark").visible, data.succeed)
        compare(find("successText").visible, data.succeed)
        compare(find("failureMark").visible, data.fail)
        compare(find("hashedText").visible, data.hash)
        compare(find("failedPair").text, data.fail ? "A001 → RAID Backup" : "")
        // What is seen from afar: the hue of the block's edge.
        const edge = find("status").border.color
        verify(data.succeed === (edge.g > edge.r * 2 && edge.g > edge.b), "green " + edge)
        verify(data.fail === (edge.r > edge.g * 2), "red " + edge)
        verify(data.hash === (edge.b > edge.r * 2 && edge.b > edge.g), "blue " + edge)
        compare(find("percent").text, data.succeed || data.hash ? "100%" : data.fail ? "0%" : "11%")
    }

    // A tired person must not take yesterday's green for today's.
    function test_a_verdict_belongs_to_its_batch() {
        stage.succeed()
        stage.choose("A001", "")
        compare(model.batch.standing, BatchControl.Resting)
        verify(!find("successMark").visible)
        compare(find("percent").text, "0%")
        verify(/^Last offload: verified, 214 files, \d\d:\d\d$/.test(find("lastOffload").text))
        verify(!find("showOutcome").visible)
        mouseClick(find("copy"))
        compare(find("title", find("status")).text, "A001 has no unit yet")
        stage.choose("A001", "CamA")
        compare(find("title", find("status")).text, L10n.idlePrompt)
        stage.succeed(1)
        stage.choose("A001", "")
        verify(find("lastOffload").text.startsWith("Last offload: verified, with notes, 214"))
        verify(!find("problems").visible && !find("pairs").visible)
        mouseClick(find("copy"))
        mouseClick(find("showOutcome"))
        tryVerify(() => findChild(root.Window.window.contentItem, "outcomeText") !== null)
        verify(find("outcomeText", root.Window.window.contentItem).text.includes("LINKS/0"))
    }

    function test_a_failure_says_what_and_what_to_do() {
        const lines = () => Array.from(find("pairs").children).concat(Array.from(find("problems").children)).filter(
                              line => line.visible && line.text).map(line => line.text)
        stage.fail(7)
        compare(lines().slice(0, 4).map(line => line.split(":")[0]),
                ["A001 → RAID Backup", "A001 → SHUTTLE_01", "B004 → SHUTTLE_01 was not begun.",
                 "B004 → RAID Backup was not begun."])
        compare(lines().length, 4 + 3, "the first three problems")
        compare(find("untold").text, "and 3 more")
        verify(find("advice").text.includes("Do not wipe the card"))
        mouseClick(find("showOutcome"))
        tryVerify(() => findChild(root.Window.window.contentItem, "outcomeText") !== null)
        const all = find("outcomeText", root.Window.window.contentItem)
        verify(all.text.includes("CLIPS7"))
        tryVerify(() => find("copyText", root.Window.window.contentItem).visible)
        waitForRendering(root)
        mouseClick(find("copyText", root.Window.window.contentItem))
        clipboard.paste()
        compare(clipboard.text, all.text)
        stage.copying(0.1)
        compare(lines(), [], "until the next batch")
    }
    TextEdit {
        id: clipboard
        visible: false
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
    function test_texts_stand_out_from_their_ground_data() {
        return [{ tag: "light", dark: false }, { tag: "dark", dark: true }]
    }
    function test_texts_stand_out_from_their_ground(data) {
        desktop.setDark(data.dark)
        compare(DITTheme.dark, data.dark)
        const panel = Qt.tint(DITTheme.window, DITTheme.panelFill)
        const laid = (colour, ground) => Qt.tint(ground, colour)
        const focused = laid(DITTheme.withOpacity(DITTheme.accent, 0.14), panel)
        const hovered = laid(DITTheme.hover, panel)
        const destructive = laid(DITTheme.withOpacity(DITTheme.danger, 0.1), panel)
        const pairs = [
            ["secondary", laid(DITTheme.secondary, panel), panel],
            ["tertiary", laid(DITTheme.tertiary, panel), panel],
            ["on a row in focus", laid(DITTheme.tertiary, focused), focused],
            ["on a row under the pointer", laid(DITTheme.tertiary, hovered), hovered],
            ["destructive", DITTheme.dangerText, laid(DITTheme.withOpacity(DITTheme.primary, 0.14), destructive)],
            ["danger", DITTheme.dangerText, laid(DITTheme.withOpacity(DITTheme.danger, 0.14), panel)],
            ["accent", DITTheme.accentText, panel],
            ["on accent", Qt.color("white"), DITTheme.accent]
        ]
        for (const hue of [DITTheme.ekip, DITTheme.unit]) {
            const badge = laid(DITTheme.withOpacity(hue, 0.18), focused)
            pairs.push(["badge " + hue, DITTheme.legible(hue), badge])
            pairs.push(["chip " + hue, Qt.color(DITTheme.inkOn(hue)), hue])
        }
        for (const [what, over, under] of pairs)
            verify(contrast(over, under) >= 4.5, what + ": " + contrast(over, under).toFixed(2))
        // Large and bold: three to one.
        stage.succeed()
        tryVerify(() => contrast(find("successText").color, laid(find("status").color, DITTheme.window)) >= 3)
        desktop.setDark(false)
    }

    function test_both_languages_fit_data() {
        const cases = []
        for (const language of ["en", "tr"]) {
            for (const width of [984, 700])
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
        verify(root.implicitWidth <= 700, "least width " + root.implicitWidth)
    }

    function test_a_hint_shows_all_of_its_words() {
        model.settings.projectName = "A long name ".repeat(20)
        const name = find("projectName")
        mouseMove(name, 5, 5)
        const shown = () => findChild(root.Window.window.contentItem, "hintText")
        tryVerify(() => shown() !== null && shown().lineCount > 1)
        verify(shown().height >= shown().implicitHeight, shown().height)
        mouseMove(root, 5, 5)
    }

    function test_a_laptop_shows_two_cards_and_two_disks() {
        test.width = 1280
        test.height = 720
        waitForRendering(root)
        for (const column of ["cards", "disks"]) {
            const second = row(column, 1)
            const bottom = second.mapToItem(root, 0, second.height).y
            verify(bottom <= find("picker").mapToItem(root, 0, 0).y, column)
        }
        const hint = find("picker").mapToItem(root, 0, find("picker").height).y
        verify(hint <= find("status").y, "without scrolling")
        stage.fail()
        waitForRendering(root)
        verify(find("picker").mapToItem(root, 0, find("picker").height).y <= find("status").y, "nor then")
        // Green is not all that there is to know.
        stage.choose("A001", "CamA")
        stage.choose("B004", "CamB")
        stage.succeed(2)
        waitForRendering(root)
        const note = Array.from(find("problems").children).find(line => line.text)
        verify(find("problems").visible && note.visible && note.text.startsWith("The link LINKS/0"))
        verify(Qt.colorEqual(note.color, DITTheme.warningText))
        verify(find("showOutcome").visible && find("untold").text === "and 2 more")
        verify(find("picker").mapToItem(root, 0, find("picker").height).y <= find("status").y, "nor with notes")
        test.width = 984
        test.height = 900
    }

    function test_a_low_window_keeps_the_buttons_in_sight() {
        test.height = 520
        waitForRendering(root)
        const copy = find("copy")
        verify(copy.mapToItem(root, 0, copy.height).y <= root.height)
        field("units").forceActiveFocus(Qt.TabFocusReason)
        const bottom = field("units").mapToItem(root, 0, field("units").height).y
        verify(bottom <= find("status").y, "what has the keyboard is in sight")
        verify(!find("notesMark").visible)
        stage.succeed(1)
        verify(find("notesMark").visible && find("showOutcome").visible)
        test.height = 900
    }
}
