#include "Model/Units/CardUnits.h"

#include "Platform/Text.h"

namespace slatewise {

namespace {

std::string labelOf(const CardLabels& labels, std::string_view card) {
    const auto found = labels.find(card);
    return found == labels.end() ? std::string() : found->second;
}

void eraseLabel(CardLabels& labels, std::string_view label) {
    std::erase_if(labels, [&](const auto& entry) { return entry.second == label; });
}

} // namespace

std::string CardUnits::cameraLabel(std::string_view card) const {
    return labelOf(cameraByCardID, card);
}

std::string CardUnits::ekipLabel(std::string_view card) const {
    return labelOf(ekipByCardID, card);
}

void CardUnits::setCamera(const std::string& card, std::string_view unit) {
    const auto label = Text::pathSafeLabel(unit);
    if (label.empty())
        return;
    cameraByCardID[card] = label;
    cardsNeedingUnit.erase(card);
}

void CardUnits::forgetUnit(std::string_view unit) {
    eraseLabel(cameraByCardID, unit);
}

void CardUnits::forgetEkip(std::string_view ekip) {
    eraseLabel(ekipByCardID, ekip);
}

} // namespace slatewise
