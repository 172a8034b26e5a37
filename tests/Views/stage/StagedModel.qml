import QtQuick
import SlatewiseStage

// Stands in for the application's model: shows what it is given, and remembers what it was asked.
QtObject {
    id: model

    property string language: "en"
    readonly property var l10n: StageTexts.fixed(language)
    readonly property var languages: [{ value: "en", name: "English" }, { value: "tr", name: "Türkçe" }]
    property string appName: "Slatewise DIT"
    property string appVersion: "0.1.42.0"
    property string websiteLabel: "Slatewise Tools"
    property string websiteURL: "https://slatewise.example/"
    property string projectName: ""
    property string saasLine: ""

    property ListModel cards: ListModel {}
    property ListModel destinations: ListModel {}
    property string sourceTotalText: "0 bytes"
    property var sets: [
        { id: "1", name: "Ekip1", selected: true },
        { id: "2", name: "Ekip2", selected: false }
    ]
    property var units: ["CamA", "CamB", "CamC", "CamD", "Drone", "Gimbal", "Ses"].map(
                            name => ({ name: name, active: false }))
    property string unitTitle: l10n.selectCardsFirst
    property string newSetName: ""
    property string newUnitName: ""

    property real progressFraction: 0
    property string progressPercentText: Math.round(progressFraction * 100) + "%"
    property string progressTitle: l10n.idlePrompt
    property bool progressDidSucceed: false
    property bool progressDidFail: false
    property bool isBusy: false
    property bool canCopy: false

    property bool isAdvancedPresented: false
    property bool ejectAfterSuccess: true
    property bool verifyOnly: false
    property string folderTemplate: StageTexts.defaultTemplate()
    property string folderTemplatePreview: expandTemplate(folderTemplate, templateExample())
    property var defaultSkipNames: StageTexts.defaultSkipNames()
    property var extraExcludes: []
    property string reportsFolderDisplay: "/home/dit/Documents/SlatewiseDIT"
    property bool isDefaultReportsFolder: true
    property var templateTokens: StageTexts.templateTokens(language)
    property var templateSeparators: StageTexts.templateSeparators(language)
    property var templatePresets: StageTexts.templatePresets(language)

    // What was called, in order: [name, arguments...].
    property var calls: []
    property string destination: "/media/dit/SHUTTLE_01"

    function called(...call) { calls.push(call) }
    function add(list, values) {
        list.append(Object.assign({
            volumeID: "", name: "", subtitle: "", path: "", selected: false, focused: false,
            ekip: "", unit: "", needsUnit: false, picked: false
        }, values))
    }

    function toggleCard(id) { called("toggleCard", id) }
    function focusCard(id) { called("focusCard", id) }
    function removeCard(id) { called("removeCard", id) }
    function clearAllCards() { called("clearAllCards") }
    function pickCardFolder() { called("pickCardFolder") }
    function toggleDestination(id) { called("toggleDestination", id) }
    function focusDestination(id) { called("focusDestination", id) }
    function removeDestination(id) { called("removeDestination", id) }
    function clearAllDestinations() { called("clearAllDestinations") }
    function pickDestinationFolder() { called("pickDestinationFolder") }
    // Like the real model, gives every entry anew.
    function tapUnit(name) {
        called("tapUnit", name)
        units = units.map(unit => ({ name: unit.name, active: unit.name === name }))
    }
    function tapSet(id) {
        called("tapSet", id)
        sets = sets.map(set => ({ id: set.id, name: set.name, selected: set.id === id }))
    }
    function addUnitFromField() { called("addUnitFromField", newUnitName); newUnitName = "" }
    function addSetFromField() { called("addSetFromField", newSetName); newSetName = "" }
    function deleteSelectedUnit() { called("deleteSelectedUnit") }
    function deleteSelectedSet() { called("deleteSelectedSet") }
    function startCopy() { called("startCopy") }
    function cancelCopy() { called("cancelCopy") }
    function pickReportsFolder() { called("pickReportsFolder") }
    function resetReportsFolder() { called("resetReportsFolder") }
    function revealReportsFolder() { called("revealReportsFolder") }
    function addSkipName(name) { called("addSkipName", name) }
    function removeSkipName(name) {
        called("removeSkipName", name)
        extraExcludes = extraExcludes.filter(other => other !== name)
    }
    function setDefaultSkip(name, skipped) {
        called("setDefaultSkip", name, skipped)
        defaultSkipNames = defaultSkipNames.map(
            entry => entry.name === name ? { name: name, skipped: skipped } : entry)
    }
    function saveSettings() { called("saveSettings") }
    function templateExample() {
        return {
            destination: model.destination, cardName: "A001", camera: "CamA", ekip: "Ekip1",
            project: projectName
        }
    }
    function expandTemplate(text, values) { return StageTexts.expand(text, values) }
    function normalizedTemplate(text) { return StageTexts.normalize(text) }
    function defaultTemplate() { return StageTexts.defaultTemplate() }
    function saveTemplate(text) {
        called("saveTemplate", text)
        folderTemplate = StageTexts.normalize(text)
    }
}
