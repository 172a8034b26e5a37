#include "Platform/BlockDevices.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>

namespace slatewise::BlockDevices {

namespace {

/// Btrfs, and file systems outside the kernel that a user mounted, have numbers that stand for no
/// device.
bool standForNoDevice(dev_t numbers) {
    return major(numbers) == 0;
}

} // namespace

dev_t numbersOf(const Mount& mount) {
    if (!standForNoDevice(mount.device))
        return mount.device;
    if (!mount.source.starts_with("/dev/"))
        return 0;
    struct stat facts {};
    if (::stat(mount.source.c_str(), &facts) != 0 || !S_ISBLK(facts.st_mode))
        return 0;
    return facts.st_rdev;
}

std::string nameOf(dev_t numbers, const std::filesystem::path& sys) {
    const auto known =
        sys / "dev/block" / (std::to_string(major(numbers)) + ":" + std::to_string(minor(numbers)));
    std::error_code failure;
    auto name = std::filesystem::read_symlink(known, failure).filename().native();
    // The system's way to write a slash in a name of one part.
    std::replace(name.begin(), name.end(), '!', '/');
    return name;
}

std::filesystem::path pathUnder(const std::filesystem::path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0)
        return {};
    auto numbers = facts.st_dev;
    if (standForNoDevice(numbers)) {
        const auto mounts = MountTable::read();
        const auto mount = std::find_if(mounts.begin(), mounts.end(), [&](const Mount& each) {
            return each.device == facts.st_dev;
        });
        numbers = mount == mounts.end() ? 0 : numbersOf(*mount);
    }
    const auto name = nameOf(numbers);
    return name.empty() ? std::filesystem::path() : std::filesystem::path("/dev") / name;
}

} // namespace slatewise::BlockDevices
