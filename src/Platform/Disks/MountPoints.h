#pragma once

#include "Platform/Disks/MountTable.h"

#include <filesystem>

/// Folders that other volumes are meant to be mounted on.
namespace slatewise::MountPoints {

/// Whether a folder is such a one or lies below one, and nothing is mounted on it or on a folder
/// above it: what is written there goes to the system's disk. What the table of file systems names
/// is meant to be mounted on, and so is what lies where desktops mount media, whatever was copied
/// there by mistake before; below "/mnt" a folder counts only while it is empty, since somebody may
/// keep things in one on purpose. False of what is not there. Blocks as the folder does. Never
/// fails.
bool isBare(const std::filesystem::path& folder,
            const std::filesystem::path& fileSystems = "/etc/fstab",
            const std::filesystem::path& mounts = MountTable::ofThisProcess) noexcept;

} // namespace slatewise::MountPoints
