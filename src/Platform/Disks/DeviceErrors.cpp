#include "Platform/Disks/DeviceErrors.h"

#include "Platform/Disks/BlockDevices.h"

#include <algorithm>
#include <fstream>
#include <optional>

namespace slatewise {

namespace {

std::vector<std::filesystem::path> countersUnder(dev_t device, const std::filesystem::path& sys) {
    const auto folder = BlockDevices::folderOf(device, sys);
    std::vector<std::filesystem::path> counters;
    if (folder.empty())
        return counters;
    for (const auto& disk : BlockDevices::disksUnder(folder))
        counters.push_back(disk / "device/ioerr_cnt");
    return counters;
}

std::optional<std::int64_t> numberIn(const std::filesystem::path& counter) {
    std::int64_t number = 0;
    // Written as "0x1f".
    if (std::ifstream(counter) >> std::hex >> number)
        return number;
    return std::nullopt;
}

} // namespace

DeviceErrors::DeviceErrors(dev_t device, const std::filesystem::path& sys)
    : counters_(countersUnder(device, sys)), before_(count()) {}

bool DeviceErrors::areCounted() const {
    return !counters_.empty() &&
           std::all_of(counters_.begin(), counters_.end(),
                       [](const auto& counter) { return numberIn(counter).has_value(); });
}

bool DeviceErrors::haveGrown() const {
    return count() > before_;
}

std::int64_t DeviceErrors::count() const {
    std::int64_t sum = 0;
    for (const auto& counter : counters_)
        sum += numberIn(counter).value_or(0);
    return sum;
}

} // namespace slatewise
