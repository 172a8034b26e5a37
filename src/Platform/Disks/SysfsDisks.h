#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <filesystem>
#include <optional>
#include <sys/types.h>

/// Disks as the kernel itself describes them.
namespace slatewise::SysfsDisks {

/// Everything but what stands in the file system: label, UUID and kind. Nothing for numbers that
/// the kernel does not know. An encrypted or composed device has the bus of the first disk under
/// it.
std::optional<DiskFacts> facts(dev_t numbers, const std::filesystem::path& sys = "/sys");

} // namespace slatewise::SysfsDisks
