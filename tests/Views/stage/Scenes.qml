import QtQuick
import SlatewiseStage

// Sets a staged model to what a user sees at each point of the way.
QtObject {
    id: scenes

    property StagedModel model: StagedModel {}

    function play(scene) {
        ({
            empty: () => {},
            cards: cards, ready: ready, needsUnit: needsUnit, busy: busy, success: success,
            failed: failed, crowded: crowded, sheet: sheet, editor: sheet
        })[scene]()
    }

    function cards() {
        model.projectName = "Uzak Kıyılar"
        model.saasLine = model.language === "tr" ? "Bağımsız kullanım" : "Standalone"
        model.add(model.cards, { volumeID: "a", name: "A001", subtitle: "118.2 GB", path: "/media/dit/A001",
                                 selected: true, focused: true, ekip: "Ekip1" })
        model.add(model.cards, { volumeID: "b", name: "B004", subtitle: "64.07 GB", path: "/media/dit/B004" })
        model.add(model.cards, { volumeID: "c", name: "SES_MIX_02", subtitle: model.l10n.measuringSize, path: "/media/dit/SES_MIX_02" })
        model.add(model.destinations, { volumeID: "x", name: "SHUTTLE_01", subtitle: "3.12 TB",
                                        path: "/media/dit/SHUTTLE_01", selected: true })
        model.add(model.destinations, { volumeID: "y", name: "RAID Backup", subtitle: "18.4 TB",
                                        path: "/media/dit/RAID Backup", selected: true, focused: true })
        model.sourceTotalText = "118.2 GB"
        model.unitTitle = StageTitles.whichNamedCard(model.language, "A001")
        model.canCopy = true
    }
    function ready() {
        cards()
        model.cards.setProperty(0, "unit", "CamA")
        model.cards.setProperty(1, "selected", true)
        model.cards.setProperty(1, "ekip", "Ekip1")
        model.cards.setProperty(1, "unit", "CamB")
        model.units = model.units.map(unit => ({ name: unit.name, active: unit.name === "CamA" }))
        model.unitTitle = model.l10n.whichThisCard
        model.sourceTotalText = "182.3 GB"
    }
    function needsUnit() {
        ready()
        model.cards.setProperty(1, "unit", "")
        model.cards.setProperty(1, "needsUnit", true)
    }
    function busy() {
        ready()
        model.isBusy = true
        model.canCopy = false
        model.progressFraction = 0.43
        model.progressTitle = StageTitles.busy(model.language)
    }
    function success() {
        ready()
        model.progressFraction = 1
        model.progressDidSucceed = true
        model.progressTitle = StageTitles.verified(model.language)
    }
    function failed() {
        ready()
        model.progressDidFail = true
        model.progressTitle = StageTitles.incomplete(model.language)
    }
    function crowded() {
        ready()
        for (let i = 0; i < 9; ++i) {
            model.add(model.cards, {
                volumeID: "m" + i, subtitle: "512.1 GB", selected: i % 2 === 0, ekip: "Birinci Ekip",
                unit: i % 2 ? "" : "Steadicam Operator", needsUnit: i % 2 === 1,
                name: "A very long card name that nobody asked for " + i,
                path: "/media/dit/A very long card name that nobody asked for " + i
            })
        }
        model.units = model.units.concat(["Steadicam Operator", "Underwater", "Crash Cam", "Witness"].map(
                                             name => ({ name: name, active: false })))
        model.projectName = "A production whose name does not fit into any header that was ever drawn"
    }
    function sheet() {
        ready()
        model.extraExcludes = ["MISC", "INDEX.DAT"]
        model.isAdvancedPresented = true
    }
}
