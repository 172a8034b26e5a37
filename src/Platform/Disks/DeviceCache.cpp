#include "Platform/Disks/DeviceCache.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace slatewise::DeviceCache {

namespace {

// Younger than the headers we are built with, or not in them.
constexpr std::uint32_t kHfsPlus = 0x482b;
constexpr std::uint32_t kNtfs = 0x7366746e;

/// File systems whose files have their pages for themselves, and nothing else between these and the
/// device. Where files lie on other files or come from another machine, somebody else may remember
/// them, whom we can neither ask nor make forget.
constexpr std::array<std::uint32_t, 8> kKnown = {
    EXT4_SUPER_MAGIC,  XFS_SUPER_MAGIC,  BTRFS_SUPER_MAGIC, MSDOS_SUPER_MAGIC,
    EXFAT_SUPER_MAGIC, F2FS_SUPER_MAGIC, kHfsPlus,          kNtfs};

/// 0 when it cannot be learnt.
std::uint32_t fileSystemUnder(const std::filesystem::path& path) {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 ? static_cast<std::uint32_t>(facts.f_type) : 0;
}

bool isLoopPastMemory(const std::filesystem::path& disk) {
    try {
        return Text::trimmed(FileSystem::read(disk / "loop/dio")) == "1";
    } catch (const PosixError&) {
        return false;
    }
}

/// Whether what is read of the disk comes from hardware. A file that stands for one is remembered
/// as any file is, unless whoever made it a disk asked for direct transfers; behind most other
/// disks that no driver of hardware made is memory, another machine or another program.
bool answersFromHardware(const std::filesystem::path& disk) {
    return FileSystem::exists(disk / "device") || isLoopPastMemory(disk);
}

bool liesOnHardware(const std::filesystem::path& device) {
    std::error_code failure;
    const auto disks = BlockDevices::disksUnder(std::filesystem::canonical(device, failure));
    return std::all_of(disks.begin(), disks.end(), answersFromHardware);
}

/// All devices of the volume that has this one: Btrfs may take several, and tells of one.
std::vector<std::filesystem::path> devicesBeside(const std::filesystem::path& device) {
    std::vector<std::filesystem::path> devices = {device};
    for (const auto& volume : FileSystem::entriesIfAny("/sys/fs/btrfs")) {
        const auto members = FileSystem::entriesIfAny(volume / "devices");
        if (members.contains(volume / "devices" / device.filename()))
            devices.insert(devices.end(), members.begin(), members.end());
    }
    return devices;
}

} // namespace

Drop drop(const std::filesystem::path& path) {
    const auto folder = BlockDevices::folderOf(BlockDevices::numbersUnder(path));
    if (folder.empty())
        return Drop::NotPossible;
    const auto devices = devicesBeside(folder);
    if (!std::all_of(devices.begin(), devices.end(), liesOnHardware))
        return Drop::NotPossible;
    const auto fileSystem = fileSystemUnder(path);
    if (std::find(kKnown.begin(), kKnown.end(), fileSystem) != kKnown.end())
        return Drop::NotNeeded;
    if (fileSystem != FUSE_SUPER_MAGIC)
        return Drop::NotPossible;
    // Invalid when it may not be opened.
    const FileDescriptor device(
        ::open(BlockDevices::pathUnder(path).c_str(), O_RDONLY | O_CLOEXEC));
    // Only what is written can be dropped.
    if (!device || ::fsync(device.get()) != 0 ||
        ::posix_fadvise(device.get(), 0, 0, POSIX_FADV_DONTNEED) != 0)
        return Drop::NotPossible;
    return Drop::Done;
}

} // namespace slatewise::DeviceCache
