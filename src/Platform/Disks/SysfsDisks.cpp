#include "Platform/Disks/SysfsDisks.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace slatewise::SysfsDisks {

namespace {

using std::filesystem::path;

/// Empty when there is no such file.
std::string attribute(const path& file) {
    try {
        return Text::trimmed(FileSystem::read(file));
    } catch (const PosixError&) {
        return {};
    }
}

std::int64_t numberIn(const path& file) {
    const auto text = attribute(file);
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool isOn(const path& file) {
    return attribute(file) == "1";
}

path wholeDisk(const path& device) {
    return FileSystem::exists(device / "partition") ? device.parent_path() : device;
}

/// The first of the devices that this one is made of; empty when it is made of none.
path firstBelow(const path& disk) {
    std::error_code failure;
    std::set<path> below;
    // A disk that is pulled out at this moment ends the list.
    std::filesystem::directory_iterator entry(disk / "slaves", failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        below.insert(entry->path());
    return below.empty() ? path() : std::filesystem::canonical(*below.begin(), failure);
}

/// From a partition, an encrypted device or an array down to a disk.
path physicalDisk(path device) {
    constexpr int kDeepestNesting = 16;
    for (int depth = 0; depth < kDeepestNesting; ++depth) {
        device = wholeDisk(device);
        const auto below = firstBelow(device);
        if (below.empty())
            break;
        device = below;
    }
    return device;
}

/// Whether a part of the path is `prefix` followed by a number: "usb2", "ata11".
bool passesThrough(const path& disk, std::string_view prefix) {
    return std::any_of(disk.begin(), disk.end(), [&](const path& part) {
        const auto& name = part.native();
        return name.size() > prefix.size() && name.starts_with(prefix) &&
               std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                           [](char digit) { return digit >= '0' && digit <= '9'; });
    });
}

/// Firmware tells which sockets lead out of the machine; on today's machines that is Thunderbolt.
bool hangsOnAnOuterSocket(path disk, const path& sys) {
    for (; disk != sys && disk.has_relative_path(); disk = disk.parent_path()) {
        if (attribute(disk / "removable") == "removable")
            return true;
    }
    return false;
}

DiskBus busOf(const path& disk, const path& sys) {
    if (disk.filename().native().starts_with("loop"))
        return DiskBus::DiskImage;
    if (passesThrough(disk, "usb"))
        return DiskBus::Usb;
    if (passesThrough(disk, "fw"))
        return DiskBus::FireWire;
    if (passesThrough(disk, "mmc"))
        return DiskBus::SecureDigital;
    if (hangsOnAnOuterSocket(disk, sys))
        return DiskBus::Thunderbolt;
    if (disk.filename().native().starts_with("nvme"))
        return DiskBus::PciExpress;
    return passesThrough(disk, "ata") ? DiskBus::Sata : DiskBus::Unknown;
}

} // namespace

std::optional<DiskFacts> facts(dev_t numbers, const path& sys) {
    std::error_code failure;
    const auto device =
        std::filesystem::canonical(sys / "dev/block" / BlockDevices::text(numbers), failure);
    if (failure)
        return std::nullopt;
    constexpr std::int64_t kBytesPerSector = 512;
    const auto disk = physicalDisk(device);
    DiskFacts facts;
    facts.deviceName = BlockDevices::nameOf(numbers, sys);
    facts.sizeBytes = numberIn(device / "size") * kBytesPerSector;
    facts.isReadOnly = isOn(device / "ro");
    facts.bus = busOf(disk, std::filesystem::canonical(sys, failure));
    // The kernel does not mark cards in a slot of their own; chips soldered there are "MMC".
    facts.hasRemovableMedia = isOn(disk / "removable") || attribute(disk / "device/type") == "SD";
    return facts;
}

path diskUnder(dev_t numbers, const path& sys) {
    std::error_code failure;
    const auto device =
        std::filesystem::canonical(sys / "dev/block" / BlockDevices::text(numbers), failure);
    return failure ? path() : physicalDisk(device);
}

std::string mediumNumber(dev_t numbers, const path& sys) {
    return attribute(diskUnder(numbers, sys) / "diskseq");
}

std::string ownMediumNumber(dev_t numbers, const path& sys) {
    std::error_code failure;
    const auto device =
        std::filesystem::canonical(sys / "dev/block" / BlockDevices::text(numbers), failure);
    return failure ? std::string() : attribute(wholeDisk(device) / "diskseq");
}

} // namespace slatewise::SysfsDisks
