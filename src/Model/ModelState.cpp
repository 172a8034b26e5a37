#include "Model/ModelState.h"

#include "Language/L10n.h"

namespace slatewise {

namespace {

std::shared_ptr<AppDatabase> openedStore(const Surroundings& surroundings) {
    if (surroundings.openStore)
        return surroundings.openStore();
    return std::make_shared<AppDatabase>(AppDatabase::inMemory());
}

} // namespace

ModelState::ModelState(Surroundings around)
    : surroundings(std::move(around)), defaults(*surroundings.defaults),
      language(Language::load(defaults)), settings(OffloadSettings::load(defaults)),
      unitCatalog(UnitCatalog::load(defaults)), database(openedStore(surroundings)) {
    // Nobody should find cards merely hashed that they meant to copy, for a setting of last week.
    settings.verifyOnly = false;
}

L10n ModelState::l10n() const {
    return L10n(language);
}

std::string ModelState::targetUnit() const {
    const auto card = targetCard();
    return card ? cardUnits.cameraLabel(*card) : std::string();
}

std::string ModelState::activeUnit() const {
    return targetCard() ? targetUnit() : highlightedUnit;
}

void ModelState::giveCurrentCrewTo(const std::string& card) {
    cardUnits.ekipByCardID[card] = unitCatalog.selectedSet().name;
}

void ModelState::giveTargetCurrentCrew() {
    if (const auto card = targetCard())
        giveCurrentCrewTo(*card);
}

FolderTemplate::Values ModelState::templateValues() const {
    FolderTemplate::Values values;
    const auto destinations = board.selected(VolumeSide::Destination);
    if (!destinations.empty())
        values.destination = destinations.front().facts.mountPoint;
    values.project = settings.projectName;
    values.now = Clock::now();
    const auto* card = board.selectedCard();
    if (!card) {
        values.ekip = unitCatalog.selectedSet().name;
        return values;
    }
    // One card throughout, with what it is labelled with, for that is what will be copied.
    values.cardName = card->name();
    values.camera = cardUnits.cameraLabel(card->id());
    values.ekip = board.selection(VolumeSide::Card).contains(card->id())
                      ? cardUnits.ekipLabel(card->id())
                      : unitCatalog.selectedSet().name;
    return values;
}

} // namespace slatewise
