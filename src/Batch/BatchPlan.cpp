#include "Batch/BatchPlan.h"

#include "Language/L10n.h"
#include "Platform/Text.h"

namespace slatewise {

namespace {

/// "Card 1/2 · Destination 1/3 · CamA · A001 → SSD1"; nothing where there is only one pair.
std::string label(const BatchPlan& plan, std::size_t card, std::size_t destination,
                  const std::string& camera) {
    const auto cardCount = static_cast<int>(plan.cards.size());
    const auto destinationCount = static_cast<int>(plan.destinations.size());
    if (cardCount * destinationCount < 2)
        return "";
    constexpr const char* kSeparator = " · ";
    auto text = plan.l10n().batchCard(static_cast<int>(card) + 1, cardCount) + kSeparator;
    if (destinationCount > 1 && !plan.settings.verifyOnly) {
        text += plan.l10n().batchDestination(static_cast<int>(destination) + 1, destinationCount) +
                kSeparator;
    }
    return text + camera + kSeparator +
           pairName(plan.cards[card], plan.destinations[destination], plan.settings);
}

std::string joinedNames(const std::vector<ClassifiedVolume>& volumes) {
    std::string names;
    for (const auto& volume : volumes)
        names += (names.empty() ? "" : ",") + volume.name();
    return names;
}

} // namespace

std::optional<OffloadProblem> BatchPair::findMissingFolder() const {
    if (!cardFolder || !cardFolder->isStillAtItsPath())
        return OffloadProblem{OffloadProblem::Kind::CardGone, card.name()};
    if (!destinationFolder || !destinationFolder->isStillAtItsPath())
        return OffloadProblem{OffloadProblem::Kind::DiskReplaced, destination.name()};
    return std::nullopt;
}

L10n BatchPlan::l10n() const {
    return L10n(language);
}

std::string pairName(std::string_view card, std::string_view destination) {
    return Text::displayable(card) + " → " + Text::displayable(destination);
}

std::string pairName(const ClassifiedVolume& card, const ClassifiedVolume& destination,
                     const OffloadSettings& settings) {
    return settings.verifyOnly ? Text::displayable(card.name())
                               : pairName(card.name(), destination.name());
}

std::vector<BatchPair> BatchPlan::pairs() const {
    const auto labelOf = [](const CardLabels& labels, const std::string& id) {
        const auto found = labels.find(id);
        return found == labels.end() ? std::string() : found->second;
    };
    std::vector<BatchPair> pairs;
    const auto count = cards.size() * destinations.size();
    for (std::size_t card = 0; card < cards.size(); ++card) {
        const auto id = cards[card].id();
        for (std::size_t destination = 0; destination < destinations.size(); ++destination) {
            const auto camera = labelOf(cameraByCardID, id);
            pairs.push_back({cards[card],
                             destinations[destination],
                             pairName(cards[card], destinations[destination], settings),
                             camera,
                             labelOf(ekipByCardID, id),
                             {label(*this, card, destination, camera),
                              static_cast<int>(pairs.size()), static_cast<int>(count)},
                             destination + 1 == destinations.size(),
                             {},
                             {},
                             {}});
        }
    }
    return pairs;
}

std::string BatchPlan::logLine() const {
    return "Offload start dests=" + joinedNames(destinations) + " cards=" + joinedNames(cards);
}

} // namespace slatewise
