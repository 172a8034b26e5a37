pragma Singleton
import QtQuick
import SlatewiseStage

// Progress lines in either language.
QtObject {
    function whichNamedCard(language, card) { return StageTexts.whichNamedCard(language, card) }
    function failed(language, message) { return StageTexts.failed(language, message) }
    function verified(language) { return StageTexts.verified(language, 214, "182.3 GB") }
    function busy(language) {
        const line = StageTexts.copying(language, 92, 214, "CLIP/A001C092_260301.mxf", "412.6 MB")
        return (language === "tr" ? "Kart 1/2" : "Card 1/2") + " — " + line
    }
    function incomplete(language) {
        return failed(language, StageTexts.verifyIncomplete(language, "A001", "SHUTTLE_01"))
    }
}
