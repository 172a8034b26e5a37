#include "Model/Units/UnitPicker.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Platform/Text.h"

namespace slatewise {

UnitPicker::UnitPicker(ModelState& state) : state_(state) {
    connect(&state, &ModelState::changed, this, &UnitPicker::show);
}

void UnitPicker::show() {
    std::vector<Choice> crews;
    const auto& selected = state_.unitCatalog.selectedSet();
    for (const auto& crew : state_.unitCatalog.sets)
        crews.push_back({toQString(crew.id), toQString(crew.name), {}, crew.id == selected.id});
    crews_.setRows(std::move(crews));
    std::vector<Choice> units;
    const auto active = state_.activeUnit();
    for (const auto& unit : state_.unitCatalog.units)
        units.push_back({toQString(unit), toQString(unit), {}, unit == active});
    units_.setRows(std::move(units));
    const bool canDeleteCrew = state_.unitCatalog.sets.size() > 1;
    const bool canDeleteUnit = !Text::trimmed(active).empty();
    if (canDeleteCrew != canDeleteCrew_ || canDeleteUnit != canDeleteUnit_) {
        canDeleteCrew_ = canDeleteCrew;
        canDeleteUnit_ = canDeleteUnit;
        Q_EMIT deletableChanged();
    }
    if (auto now = titleNow(); now != title_) {
        title_ = std::move(now);
        Q_EMIT titleChanged();
    }
}

QString UnitPicker::titleNow() const {
    const auto l10n = state_.l10n();
    const auto target = state_.targetCard();
    const auto* card = target ? state_.board.find(*target) : nullptr;
    return toQString(card ? l10n.unitFor(Text::displayable(card->name()))
                          : std::string(l10n.selectCardsFirst()));
}

void UnitPicker::setNewCrewName(const QString& name) {
    if (name == newCrewName_)
        return;
    newCrewName_ = name;
    Q_EMIT newNamesChanged();
}

void UnitPicker::setNewUnitName(const QString& name) {
    if (name == newUnitName_)
        return;
    newUnitName_ = name;
    Q_EMIT newNamesChanged();
}

void UnitPicker::tapCrew(const QString& crewID) {
    const auto id = crewID.toStdString();
    if (id != state_.unitCatalog.selectedSetID) {
        state_.unitCatalog.selectSet(id);
        state_.unitCatalog.save(state_.defaults);
    }
    state_.giveTargetCurrentCrew();
    state_.publish();
}

void UnitPicker::tapUnit(const QString& name) {
    giveTargetUnit(name.toStdString());
    state_.publish();
}

void UnitPicker::giveTargetUnit(const std::string& unit) {
    state_.dropRefusal();
    const auto card = state_.targetCard();
    if (card)
        state_.cardUnits.setCamera(*card, unit);
    // What a card has says nothing of the unit to work on once no card is meant any more.
    state_.highlightedUnit = card ? "" : unit;
}

void UnitPicker::addCrew() {
    state_.unitCatalog.addSet(newCrewName_.toStdString());
    setNewCrewName({});
    state_.unitCatalog.save(state_.defaults);
    state_.giveTargetCurrentCrew();
    state_.publish();
}

void UnitPicker::addUnit() {
    const auto name = state_.unitCatalog.addUnit(newUnitName_.toStdString());
    if (!name)
        return;
    setNewUnitName({});
    giveTargetUnit(*name);
    state_.publish();
}

void UnitPicker::deleteCrew() {
    const auto name = state_.unitCatalog.selectedSet().name;
    state_.unitCatalog.deleteSelectedSet();
    state_.unitCatalog.save(state_.defaults);
    state_.cardUnits.forgetEkip(name);
    state_.publish();
}

void UnitPicker::deleteUnit() {
    const auto unit = state_.activeUnit();
    if (Text::trimmed(unit).empty())
        return;
    state_.unitCatalog.removeUnit(unit);
    state_.cardUnits.forgetUnit(unit);
    state_.highlightedUnit.clear();
    state_.publish();
}

} // namespace slatewise
