#include "Platform/Disks/DiskInfo.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/FileSystemProbe.h"
#include "Platform/Disks/SysfsDisks.h"
#include "Platform/Disks/UDisksClient.h"

namespace slatewise {

namespace {

std::string wordFor(DiskBus bus) {
    switch (bus) {
    case DiskBus::Usb:
        return "USB";
    case DiskBus::SecureDigital:
        return "Secure Digital";
    case DiskBus::FireWire:
        return "FireWire";
    case DiskBus::Thunderbolt:
        return "Thunderbolt";
    case DiskBus::PciExpress:
        return "PCI-Express";
    case DiskBus::Sata:
        return "SATA";
    case DiskBus::DiskImage:
        return "Disk Image";
    case DiskBus::Unknown:
        break;
    }
    return "";
}

bool isOutsideTheKernel(const std::string& fileSystem) {
    return fileSystem.starts_with("fuse");
}

/// The kernel knows best what it has mounted, except for file systems outside of it.
std::string fileSystemWord(const Mount& mount, const DiskFacts& disk) {
    const auto& name = isOutsideTheKernel(mount.fileSystem) ? disk.fileSystem : mount.fileSystem;
    if (name == "exfat")
        return "ExFAT";
    if (name == "vfat" || name == "msdos")
        return "MS-DOS " + (disk.fileSystemVersion.empty() ? "FAT32" : disk.fileSystemVersion);
    if (name == "udf")
        return "UDF";
    if (name == "hfsplus")
        return "HFS+";
    return name == "apfs" ? "APFS" : "";
}

bool isOuter(DiskBus bus) {
    return bus == DiskBus::Usb || bus == DiskBus::FireWire || bus == DiskBus::Thunderbolt ||
           bus == DiskBus::DiskImage;
}

bool isInternal(const DiskFacts& disk) {
    if (isOuter(disk.bus))
        return false;
    if (disk.bus == DiskBus::SecureDigital)
        return !disk.hasRemovableMedia;
    return disk.isSystemDisk;
}

/// Several folders or subvolumes of one file system can be mounted side by side, and are volumes of
/// their own: told apart as findmnt does.
std::string identifier(const Mount& mount, const DiskFacts& disk) {
    return mount.root == "/" ? disk.deviceName : disk.deviceName + "[" + mount.root + "]";
}

void putUnlessEmpty(PropertyList& properties, const char* key, std::string value) {
    if (!value.empty())
        properties[key] = std::move(value);
}

} // namespace

PropertyList propertyList(const Mount& mount, const std::optional<DiskFacts>& disk) {
    PropertyList properties;
    properties["Writable"] = !mount.isReadOnly && !(disk && disk->isReadOnly);
    if (!disk)
        return properties;
    putUnlessEmpty(properties, "VolumeName", disk->label);
    putUnlessEmpty(properties, "DeviceIdentifier", identifier(mount, *disk));
    putUnlessEmpty(properties, "VolumeUUID", disk->uuid);
    putUnlessEmpty(properties, "FilesystemName", fileSystemWord(mount, *disk));
    putUnlessEmpty(properties, "BusProtocol", wordFor(disk->bus));
    // A Btrfs can span devices, and then one of them says nothing of its size.
    if (mount.fileSystem != "btrfs")
        properties["TotalSize"] = disk->sizeBytes;
    const bool isImage = disk->bus == DiskBus::DiskImage;
    const bool internal = isInternal(*disk);
    properties["Internal"] = internal;
    properties["External"] = !internal && disk->bus != DiskBus::SecureDigital;
    properties["Removable"] = disk->isRemovable || isImage;
    properties["RemovableMedia"] = disk->hasRemovableMedia;
    return properties;
}

DiskInfo::DiskInfo(DiskSources sources)
    : sources_(std::move(sources)), mounts_(MountTable::read(sources_.mountTable)),
      service_(UDisksClient(sources_.busAddress).objects().value_or(UDisksObjects())) {}

const Mount* DiskInfo::mountAt(const std::filesystem::path& path) const {
    return MountTable::at(mounts_, path);
}

std::optional<PropertyList> DiskInfo::properties(const std::filesystem::path& path) const {
    const auto* mount = MountTable::holding(mounts_, path);
    if (!mount)
        return std::nullopt;
    return propertyList(*mount, factsAbout(*mount));
}

std::optional<DiskFacts> DiskInfo::factsAbout(const Mount& mount) const {
    const auto numbers = BlockDevices::numbersOf(mount, sources_.sys);
    if (numbers == 0)
        return std::nullopt;
    auto kernels = SysfsDisks::facts(numbers, sources_.sys);
    if (auto facts = service_.facts(numbers)) {
        // The service tells apart only buses with a plug for everybody.
        if (kernels && facts->bus == DiskBus::Unknown) {
            facts->bus = kernels->bus;
            facts->hasRemovableMedia |= kernels->hasRemovableMedia;
        }
        return facts;
    }
    if (kernels)
        FileSystemProbe::addTo(*kernels, sources_.devices / kernels->deviceName);
    return kernels;
}

} // namespace slatewise
