#include "Platform/Disks/DeviceCache.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DiskFacts.h"
#include "Platform/Disks/FileSystemProbe.h"
#include "Platform/Disks/FileSystemType.h"
#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <linux/magic.h>
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

bool isKnown(std::uint32_t fileSystem) {
    return std::find(kKnown.begin(), kKnown.end(), fileSystem) != kKnown.end();
}

std::string attribute(const std::filesystem::path& file) {
    try {
        return Text::trimmed(FileSystem::read(file));
    } catch (const PosixError&) {
        return {};
    }
}

/// A disk of the network looks like hardware but for the way to it.
bool leadsToAnotherMachine(const std::filesystem::path& disk) {
    std::error_code failure;
    const auto device = std::filesystem::canonical(disk / "device", failure);
    if (failure || device.native().find("/session") != std::string::npos)
        return true;
    // Where there are several ways to a disk, each has a folder of its own below.
    auto ways = FileSystem::entriesIfAny(device);
    ways.insert(device);
    return std::any_of(ways.begin(), ways.end(), [](const std::filesystem::path& way) {
        const auto transport = attribute(way / "transport");
        return !transport.empty() && transport != "pcie";
    });
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

bool isVolumeOnHardware(const std::filesystem::path& path) {
    const auto folder = BlockDevices::folderOf(BlockDevices::numbersUnder(path));
    if (folder.empty())
        return false;
    const auto devices = devicesBeside(folder);
    return std::all_of(devices.begin(), devices.end(), liesOnHardware);
}

/// Whether programs that run this device's file system outside the kernel keep nothing of its files
/// for themselves. Those of exFAT do not; others have small files among what they remember.
bool remembersNothing(const std::filesystem::path& device) {
    DiskFacts facts;
    FileSystemProbe::addTo(facts, device);
    return facts.fileSystem == "exfat";
}

/// What the image lies on may remember it, too, or be an image itself. An overlay, as containers
/// have, hands direct transfers down, and what it writes to can only be a disk of this machine.
bool isLoopPastMemory(const std::filesystem::path& disk) {
    if (attribute(disk / "loop/dio") != "1")
        return false;
    const std::filesystem::path image = attribute(disk / "loop/backing_file");
    const auto fileSystem = FileSystemType::under(image);
    return fileSystem == OVERLAYFS_SUPER_MAGIC ||
           (isKnown(fileSystem) && isVolumeOnHardware(image));
}

} // namespace

bool answersFromHardware(const std::filesystem::path& disk) {
    return FileSystem::exists(disk / "device") ? !leadsToAnotherMachine(disk)
                                               : isLoopPastMemory(disk);
}

Drop drop(const std::filesystem::path& path) {
    if (!isVolumeOnHardware(path))
        return Drop::NotPossible;
    const auto fileSystem = FileSystemType::under(path);
    if (isKnown(fileSystem))
        return Drop::NotNeeded;
    const auto name = BlockDevices::pathUnder(path);
    if (fileSystem != FUSE_SUPER_MAGIC || !remembersNothing(name))
        return Drop::NotPossible;
    // Invalid when it may not be opened.
    const FileDescriptor device(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    // Only what is written can be dropped.
    if (!device || ::fsync(device.get()) != 0 ||
        ::posix_fadvise(device.get(), 0, 0, POSIX_FADV_DONTNEED) != 0)
        return Drop::NotPossible;
    return Drop::Done;
}

} // namespace slatewise::DeviceCache
