#include "Model/DestinationMemory.h"

#include "Model/StoredList.h"
#include "Platform/Desktop/UserDefaults.h"

namespace slatewise::DestinationMemory {

namespace {

constexpr std::string_view kIDs = "lastDestIDs";
/// The older form, which knew one destination only.
constexpr std::string_view kSingleID = "lastDestID";

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

} // namespace slatewise::DestinationMemory
