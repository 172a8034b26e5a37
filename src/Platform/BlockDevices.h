#pragma once

#include "Platform/MountTable.h"

#include <filesystem>
#include <string>
#include <sys/types.h>

/// Devices that carry file systems. None of this touches a mounted file system.
namespace slatewise::BlockDevices {

/// Numbers of the device behind a mount, 0 when there is none, as for a network share.
dev_t numbersOf(const Mount& mount);

/// The kernel's name, such as "sdb1", empty when it knows no such device.
std::string nameOf(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// "/dev/sdb1" under the volume that holds `path`, empty when there is none. Looks at the item
/// itself and so blocks as its file system does.
std::filesystem::path pathUnder(const std::filesystem::path& path);

} // namespace slatewise::BlockDevices
