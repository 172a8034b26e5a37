#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>

namespace slatewise {

/// How a disk is connected.
enum class DiskBus {
    Unknown,
    Usb,
    SecureDigital,
    FireWire,
    Thunderbolt,
    PciExpress,
    Sata,
    /// No disk but a file that stands for one.
    DiskImage,
};

/// A device at one of the places where it is mounted.
struct MountedDevice {
    dev_t numbers = 0;
    std::filesystem::path mountPoint;
    /// The kernel's number of the medium, by which it differs from all that were there before.
    /// Empty where the kernel does not count.
    std::string medium;
};

/// What is known of the device under a volume and of the disk that it is a part of, whoever told
/// us.
struct DiskFacts {
    /// The kernel's name of the device that carries the file system: "sdb1", "dm-0".
    std::string deviceName;
    std::string label;
    std::string uuid;
    /// "exfat", "vfat", "ext4": the names that probing tools use. Empty when unknown.
    std::string fileSystem;
    /// Such as "FAT32".
    std::string fileSystemVersion;
    std::int64_t sizeBytes = 0;
    bool isReadOnly = false;

    DiskBus bus = DiskBus::Unknown;
    /// The disk itself is made to be unplugged.
    bool isRemovable = false;
    /// The disk is a reader: what it reads is made to be taken out.
    bool hasRemovableMedia = false;
    /// Nobody has said that a disk without an outer bus is one that comes and goes.
    bool isSystemDisk = true;
};

} // namespace slatewise
