#include "Platform/Disks/DeviceErrors.h"

#include "Platform/Disks/BlockDevices.h"

#include <fstream>

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

} // namespace

DeviceErrors::DeviceErrors(dev_t device, const std::filesystem::path& sys)
    : counters_(countersUnder(device, sys)), before_(count()) {}

bool DeviceErrors::haveGrown() const {
    return count() > before_;
}

std::int64_t DeviceErrors::count() const {
    std::int64_t sum = 0;
    for (const auto& counter : counters_) {
        std::int64_t count = 0;
        // Written as "0x1f".
        if (std::ifstream(counter) >> std::hex >> count)
            sum += count;
    }
    return sum;
}

} // namespace slatewise
