#include "Platform/Disks/SysfsDisks.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <algorithm>
#include <charconv>

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
    const auto device = BlockDevices::folderOf(numbers, sys);
    if (device.empty())
        return std::nullopt;
    constexpr std::int64_t kBytesPerSector = 512;
    const auto disk = BlockDevices::disksUnder(device).front();
    DiskFacts facts;
    facts.deviceName = BlockDevices::nameOf(numbers, sys);
    facts.sizeBytes = numberIn(device / "size") * kBytesPerSector;
    facts.isReadOnly = isOn(device / "ro");
    std::error_code failure;
    facts.bus = busOf(disk, std::filesystem::canonical(sys, failure));
    // The kernel does not mark cards in a slot of their own; chips soldered there are "MMC".
    facts.hasRemovableMedia = isOn(disk / "removable") || attribute(disk / "device/type") == "SD";
    return facts;
}

path diskUnder(dev_t numbers, const path& sys) {
    const auto device = BlockDevices::folderOf(numbers, sys);
    return device.empty() ? path() : BlockDevices::disksUnder(device).front();
}

std::string mediumNumber(dev_t numbers, const path& sys) {
    return attribute(diskUnder(numbers, sys) / "diskseq");
}

std::string ownMediumNumber(dev_t numbers, const path& sys) {
    const auto device = BlockDevices::folderOf(numbers, sys);
    return device.empty() ? "" : attribute(BlockDevices::wholeDisk(device) / "diskseq");
}

} // namespace slatewise::SysfsDisks
