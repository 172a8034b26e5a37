#include "Model/Volumes/DestinationMemory.h"

#include "Model/StoredList.h"
#include "Platform/Desktop/UserDefaults.h"

namespace slatewise::DestinationMemory {

namespace {

constexpr std::string_view kIDs = "lastDestIDs";
/// The older form, which knew one destination only.
constexpr std::string_view kSingleID = "lastDestID";

constexpr std::string_view kWanted = "wantedDestIDs";

} // namespace

StoredDestinations load(const UserDefaults& defaults) {
    return {StoredList::load(defaults, kIDs), defaults.value(kSingleID)};
}

void save(const VolumeIDs& selected, UserDefaults& defaults) {
    StoredList::save(defaults, kIDs, {selected.begin(), selected.end()});
    if (selected.empty())
        defaults.removeValue(kSingleID);
    else
        defaults.setValue(kSingleID, *selected.begin());
}

VolumeIDs loadWanted(const UserDefaults& defaults) {
    const auto stored = StoredList::load(defaults, kWanted);
    return {stored.begin(), stored.end()};
}

void saveWanted(const VolumeIDs& wanted, UserDefaults& defaults) {
    StoredList::save(defaults, kWanted, {wanted.begin(), wanted.end()});
}

} // namespace slatewise::DestinationMemory
