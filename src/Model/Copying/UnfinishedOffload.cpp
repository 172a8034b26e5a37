#include "Model/Copying/UnfinishedOffload.h"

#include "Language/L10n.h"
#include "Model/StoredList.h"
#include "Platform/Desktop/UserDefaults.h"

namespace slatewise {

namespace {

constexpr std::string_view kKey = "unfinishedOffload";

} // namespace

std::optional<UnfinishedOffload> UnfinishedOffload::load(const UserDefaults& defaults) {
    const auto stored = StoredList::load(defaults, kKey);
    if (stored.size() != 3)
        return std::nullopt;
    return UnfinishedOffload{stored[0], stored[1], stored[2]};
}

void UnfinishedOffload::save(UserDefaults& defaults) const {
    StoredList::save(defaults, kKey, {card, disk, folder});
}

std::string UnfinishedOffload::text(L10n l10n) const {
    return l10n.lastCutOff(card, disk, folder);
}

void UnfinishedOffload::forget(UserDefaults& defaults) {
    defaults.removeValue(kKey);
}

} // namespace slatewise
