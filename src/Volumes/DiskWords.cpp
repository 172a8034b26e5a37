#include "Volumes/DiskWords.h"

namespace slatewise::DiskWords {

namespace {

bool isOutsideTheKernel(const std::string& fileSystem) {
    return fileSystem.starts_with("fuse");
}

bool isOuter(DiskBus bus) {
    return bus == DiskBus::Usb || bus == DiskBus::FireWire || bus == DiskBus::Thunderbolt ||
           bus == DiskBus::DiskImage;
}

} // namespace

std::string bus(DiskBus bus) {
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

std::string fileSystem(const Mount& mount, const DiskFacts& disk) {
    // The kernel knows best what it has mounted, except for file systems outside of it.
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

bool isInternal(const DiskFacts& disk) {
    if (isOuter(disk.bus))
        return false;
    if (disk.bus == DiskBus::SecureDigital)
        return !disk.hasRemovableMedia;
    return disk.isSystemDisk;
}

} // namespace slatewise::DiskWords
