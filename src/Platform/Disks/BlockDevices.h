#pragma once

#include "Platform/Disks/MountTable.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

/// Devices that carry file systems. None of this touches a mounted file system.
namespace slatewise::BlockDevices {

/// "8:17" as the kernel writes numbers; nothing for any other text.
std::optional<dev_t> parseNumbers(std::string_view text);

/// "8:17".
std::string text(dev_t numbers);

/// Numbers of the device behind a mount, 0 when there is none, as for a network share.
dev_t numbersOf(const Mount& mount, const std::filesystem::path& sys = "/sys");

/// The kernel's name, such as "sdb1", empty when it knows no such device.
std::string nameOf(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// "/dev/sdb1" under the volume that holds `path`, empty when there is none. Looks at the item
/// itself and so blocks as its file system does.
std::filesystem::path pathUnder(const std::filesystem::path& path);

} // namespace slatewise::BlockDevices
