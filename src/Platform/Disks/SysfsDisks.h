#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

/// Disks as the kernel itself describes them.
namespace slatewise::SysfsDisks {

/// Everything but what stands in the file system: label, UUID and kind. Nothing for numbers that
/// the kernel does not know. An encrypted or composed device has the bus of the first disk under
/// it.
std::optional<DiskFacts> facts(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// The kernel's folder of the disk that the device lies on in the end; of several the first. Empty
/// for numbers that it does not know.
std::filesystem::path diskUnder(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// Grows with every medium that the kernel finds, whatever the slot. Empty where it does not count.
std::string mediumNumber(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// The same of the device itself, or of the one that it is a partition of, and not of the disk that
/// an encrypted device or an array lies on.
std::string ownMediumNumber(dev_t numbers, const std::filesystem::path& sys = "/sys");

} // namespace slatewise::SysfsDisks
