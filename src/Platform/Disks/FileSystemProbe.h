#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <filesystem>

/// What stands at the head of a device about the file system in it.
namespace slatewise::FileSystemProbe {

/// Fills in label, UUID, file system and its version. Leaves them as they are when the device may
/// not be read. Reads from the device and so blocks as it does.
void addTo(DiskFacts& facts, const std::filesystem::path& device);

} // namespace slatewise::FileSystemProbe
