#pragma once

#include "Platform/Disks/MountTable.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

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

/// The kernel's folder of the device, without links; empty when it knows no such device.
std::filesystem::path folderOf(dev_t numbers, const std::filesystem::path& sys = "/sys");

/// The folder of the disk that a device is a part of, which may be itself.
std::filesystem::path wholeDisk(const std::filesystem::path& device);

/// The kernel's folders of the disks that a device lies on in the end, below partitions, encryption
/// and arrays; in the order of their names, and never none. `device` is such a folder too.
std::vector<std::filesystem::path> disksUnder(const std::filesystem::path& device);

/// Numbers of the device under the volume that holds `path`, 0 when there is none. Looks at the
/// item itself and so blocks as its file system does. The same holds for its path, "/dev/sdb1",
/// which is empty then.
dev_t numbersUnder(const std::filesystem::path& path);
std::filesystem::path pathUnder(const std::filesystem::path& path);

} // namespace slatewise::BlockDevices
