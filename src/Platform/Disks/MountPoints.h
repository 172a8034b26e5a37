#pragma once

#include "Platform/Disks/MountTable.h"

#include <filesystem>

/// Folders that other volumes are meant to be mounted on.
namespace slatewise::MountPoints {

/// Whether a folder is such a one or lies below one, and nothing is mounted on it or on a folder
/// above it: what is written there goes to the system's disk. What the table of file systems names
/// is meant to be mounted on, whatever was copied there by mistake before; where media are mounted
/// a folder counts only while it is empty, since somebody may keep things in one on purpose. The
/// path must be absolute and lead through no links. Never fails.
bool isBare(const std::filesystem::path& folder,
            const std::filesystem::path& fileSystems = "/etc/fstab",
            const std::filesystem::path& mounts = MountTable::ofThisProcess) noexcept;

} // namespace slatewise::MountPoints
