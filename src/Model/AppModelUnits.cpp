#include "Model/AppModel.h"

#include "Model/QtText.h"
#include "Platform/Text.h"

#include <algorithm>

// Units and crews: what the user says a card belongs to.

namespace slatewise {

std::string AppModel::selectedCamera() const {
    const auto card = board_.cardSelection().target();
    return card ? cardUnits_.cameraLabel(*card) : std::string();
}

std::string AppModel::activeUnitForEdit() const {
    const auto camera = selectedCamera();
    return camera.empty() ? highlightedUnit_ : camera;
}

bool AppModel::allCardsHaveUnits() const {
    const auto cards = board_.selectedCards();
    return std::all_of(cards.begin(), cards.end(), [&](const auto& card) {
        return !cardUnits_.cameraLabel(card.id()).empty();
    });
}

void AppModel::setSelectedCamera(const std::string& unit) {
    if (const auto card = board_.cardSelection().target())
        cardUnits_.setCamera(*card, unit);
}

void AppModel::assignCurrentEkip(const std::optional<std::string>& card) {
    if (card)
        cardUnits_.ekipByCardID[*card] = unitCatalog_.selectedSet().name;
}

void AppModel::labelCard(const QString& volumeID, const std::string& camera,
                         const std::string& ekip) {
    const auto& cards = board_.lists().cards;
    const auto card = std::find_if(cards.begin(), cards.end(), [&](const auto& listed) {
        return toQString(listed.id()) == volumeID;
    });
    if (card == cards.end())
        return;
    cardUnits_.clearUnit(card->id());
    cardUnits_.setCamera(card->id(), camera);
    cardUnits_.ekipByCardID[card->id()] = ekip;
    publish();
}

void AppModel::setNewSetName(const QString& name) {
    if (name == newSetName_)
        return;
    newSetName_ = name;
    Q_EMIT newNamesChanged();
}

void AppModel::setNewUnitName(const QString& name) {
    if (name == newUnitName_)
        return;
    newUnitName_ = name;
    Q_EMIT newNamesChanged();
}

void AppModel::tapUnit(const QString& name) {
    highlightedUnit_ = name.toStdString();
    setSelectedCamera(highlightedUnit_);
    publish();
}

void AppModel::tapSet(const QString& setID) {
    const auto id = setID.toStdString();
    if (id != unitCatalog_.selectedSetID) {
        unitCatalog_.selectSet(id);
        unitCatalog_.save(defaults_);
    }
    assignCurrentEkip(board_.cardSelection().target());
    publish();
}

void AppModel::addUnitFromField() {
    const auto name = unitCatalog_.addUnit(newUnitName_.toStdString());
    if (!name)
        return;
    setNewUnitName({});
    highlightedUnit_ = *name;
    setSelectedCamera(*name);
    publish();
}

void AppModel::addSetFromField() {
    unitCatalog_.addSet(newSetName_.toStdString());
    setNewSetName({});
    unitCatalog_.save(defaults_);
    assignCurrentEkip(board_.cardSelection().target());
    publish();
}

void AppModel::deleteSelectedUnit() {
    const auto unit = activeUnitForEdit();
    if (Text::trimmed(unit).empty())
        return;
    unitCatalog_.removeUnit(unit);
    cardUnits_.forgetUnit(unit);
    highlightedUnit_.clear();
    publish();
}

void AppModel::deleteSelectedSet() {
    const auto name = unitCatalog_.selectedSet().name;
    unitCatalog_.deleteSelectedSet();
    unitCatalog_.save(defaults_);
    cardUnits_.forgetEkip(name);
    publish();
}

} // namespace slatewise
