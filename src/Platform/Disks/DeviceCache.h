#pragma once

#include <filesystem>

/// The system's memory of a whole device, which stands behind that of single files when a file
/// system runs outside the kernel, as exFAT and NTFS may, or when the device is a file itself.
/// Dropping a file from the cache does not reach it.
namespace slatewise::DeviceCache {

enum class Drop {
    /// The file system is the kernel's own: files are all there is to drop.
    NotNeeded,
    Done,
    /// Nobody told us the device, or this user may not open it, or it is a file that the system
    /// keeps in memory itself. What is read next may come from memory.
    NotPossible,
};

/// Empties the cache of the device under the volume that holds `path`, once all of it is written.
/// Reports no failure but in what it gives.
Drop drop(const std::filesystem::path& path);

} // namespace slatewise::DeviceCache
