#pragma once

#include <filesystem>

/// Folders that other volumes are meant to be mounted on.
namespace slatewise::MountPoints {

/// Whether a folder is such a one, by /etc/fstab or by lying where media are mounted, and nothing
/// is mounted on it or on a folder above it: what is written there goes to the system's disk. The
/// path must be absolute and lead through no links. Never fails.
bool isBare(const std::filesystem::path& folder) noexcept;

} // namespace slatewise::MountPoints
