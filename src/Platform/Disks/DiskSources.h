#pragma once

#include "Platform/Disks/MountTable.h"

#include <filesystem>
#include <string>

namespace slatewise {

/// Where the machine is asked about its disks. Tests put machines of their own in place.
struct DiskSources {
    /// Address of the bus on which the disk service is; empty for the system's.
    std::string busAddress;
    std::filesystem::path mountTable = MountTable::ofThisProcess;
    std::filesystem::path sys = "/sys";
    /// What the device manager has found out about them.
    std::filesystem::path deviceRecords = "/run/udev/data";
    /// Where devices can be read from, under the kernel's names.
    std::filesystem::path devices = "/dev";
};

} // namespace slatewise
