#include "Platform/Disks/FileSystemType.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>

namespace slatewise::FileSystemType {

std::uint32_t under(const std::filesystem::path& path) noexcept {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 ? static_cast<std::uint32_t>(facts.f_type) : 0;
}

bool keepsFileNumbers(const std::filesystem::path& path) noexcept {
    constexpr std::array<std::uint32_t, 4> kKeeping = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,
                                                       BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC};
    return std::find(kKeeping.begin(), kKeeping.end(), under(path)) != kKeeping.end();
}

bool keepsChangeDates(const std::filesystem::path& path) noexcept {
    constexpr std::array<std::uint32_t, 4> kForgetting = {0, MSDOS_SUPER_MAGIC, EXFAT_SUPER_MAGIC,
                                                          FUSE_SUPER_MAGIC};
    return std::find(kForgetting.begin(), kForgetting.end(), under(path)) == kForgetting.end();
}

} // namespace slatewise::FileSystemType
