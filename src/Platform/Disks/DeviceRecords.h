#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <filesystem>
#include <sys/types.h>

/// What the device manager has found on each device when it appeared. Every user may read it, and
/// no device is touched for it.
namespace slatewise::DeviceRecords {

/// Fills in label, UUID, file system and its version. Leaves them as they are when nobody has
/// looked at the device, or a medium was in it then that is gone.
void addTo(DiskFacts& facts, dev_t numbers, const std::filesystem::path& sys,
           const std::filesystem::path& records);

} // namespace slatewise::DeviceRecords
