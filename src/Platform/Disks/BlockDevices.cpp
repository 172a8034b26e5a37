#include "Platform/Disks/BlockDevices.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <charconv>

namespace slatewise::BlockDevices {

namespace {

constexpr auto kDeviceFolder = "/dev/";

/// Btrfs, and file systems outside the kernel that a user mounted, have numbers that stand for no
/// device.
bool standForNoDevice(dev_t numbers) {
    return major(numbers) == 0;
}

/// "sdb1" for "/dev/sdb1", also when that is one of the other names which a device can have.
std::string kernelNameOf(const std::filesystem::path& device) {
    std::error_code failure;
    const auto real = std::filesystem::canonical(device, failure);
    return (failure ? device : real).lexically_relative(kDeviceFolder).native();
}

/// The system's way to write a slash in a name of one part.
constexpr char kSlashInName = '!';

std::string replaced(std::string name, char from, char to) {
    std::replace(name.begin(), name.end(), from, to);
    return name;
}

void addDisksUnder(const std::filesystem::path& device, int deepest,
                   std::vector<std::filesystem::path>& disks) {
    const auto disk = wholeDisk(device);
    const auto parts = FileSystem::entriesIfAny(disk / "slaves");
    if (parts.empty() || deepest == 0)
        disks.push_back(disk);
    for (const auto& part : parts) {
        std::error_code failure;
        const auto folder = std::filesystem::canonical(part, failure);
        if (deepest > 0)
            addDisksUnder(failure ? part : folder, deepest - 1, disks);
    }
}

} // namespace

std::optional<dev_t> parseNumbers(std::string_view text) {
    unsigned major = 0;
    unsigned minor = 0;
    const auto* const end = text.data() + text.size();
    const auto colon = std::from_chars(text.data(), end, major).ptr;
    if (colon == text.data() || colon == end || *colon != ':')
        return std::nullopt;
    const auto last = std::from_chars(colon + 1, end, minor).ptr;
    if (last == colon + 1 || last != end)
        return std::nullopt;
    return makedev(major, minor);
}

std::string text(dev_t numbers) {
    return std::to_string(major(numbers)) + ":" + std::to_string(minor(numbers));
}

dev_t numbersOf(const Mount& mount, const std::filesystem::path& sys) {
    if (!standForNoDevice(mount.device))
        return mount.device;
    if (!mount.source.starts_with(kDeviceFolder))
        return 0;
    const auto name = replaced(kernelNameOf(mount.source), '/', kSlashInName);
    try {
        const auto known = FileSystem::read(sys / "class/block" / name / "dev");
        return parseNumbers(Text::trimmed(known)).value_or(0);
    } catch (const PosixError&) {
        return 0;
    }
}

std::string nameOf(dev_t numbers, const std::filesystem::path& sys) {
    std::error_code failure;
    const auto known = std::filesystem::read_symlink(sys / "dev/block" / text(numbers), failure);
    return replaced(known.filename().native(), kSlashInName, '/');
}

std::filesystem::path wholeDisk(const std::filesystem::path& device) {
    return FileSystem::exists(device / "partition") ? device.parent_path() : device;
}

std::vector<std::filesystem::path> disksUnder(const std::filesystem::path& device) {
    constexpr int kDeepestNesting = 16;
    std::vector<std::filesystem::path> disks;
    addDisksUnder(device, kDeepestNesting, disks);
    return disks;
}

std::filesystem::path folderOf(dev_t numbers, const std::filesystem::path& sys) {
    std::error_code failure;
    auto folder = std::filesystem::canonical(sys / "dev/block" / text(numbers), failure);
    return failure ? std::filesystem::path() : folder;
}

dev_t numbersUnder(const std::filesystem::path& path) {
    std::error_code failure;
    const auto real = std::filesystem::canonical(path, failure);
    if (failure)
        return 0;
    // By its path: the numbers that Btrfs gives for an item are not those of its mount.
    const auto mounts = MountTable::read();
    const auto* mount = MountTable::holding(mounts, real);
    return mount ? numbersOf(*mount) : 0;
}

std::filesystem::path pathUnder(const std::filesystem::path& path) {
    const auto name = nameOf(numbersUnder(path));
    return name.empty() ? std::filesystem::path() : std::filesystem::path(kDeviceFolder) / name;
}

} // namespace slatewise::BlockDevices
