#pragma once

#include "Platform/Disks/DiskFacts.h"
#include "Platform/Disks/MountTable.h"

#include <string>

/// The words in which verdicts on volumes are reached: those of the desktop on which they were
/// first made. Pure.
namespace slatewise::DiskWords {

/// "USB"; empty for a bus that has no word there.
std::string bus(DiskBus bus);

/// "ExFAT"; empty for a kind that has no word there, which says nothing for or against a volume.
std::string fileSystem(const Mount& mount, const DiskFacts& disk);

/// Whether the disk is built into the machine.
bool isInternal(const DiskFacts& disk);

} // namespace slatewise::DiskWords
