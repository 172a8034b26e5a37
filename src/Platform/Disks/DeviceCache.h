#pragma once

#include <filesystem>

/// What remembers files besides their own pages: the whole device, when a file system runs outside
/// the kernel, as exFAT and NTFS may; another file, when one lies on files or the device is one
/// itself; another machine. Dropping a file from the cache does not reach it.
namespace slatewise::DeviceCache {

enum class Drop {
    /// The file system is known to keep pages of its files and nothing else above the device, and
    /// the device is one of hardware: files are all there is to drop.
    NotNeeded,
    Done,
    /// Nobody told us the device, or this user may not open it, or it is a file that the system
    /// keeps in memory itself, or nobody knows what the file system remembers. What is read next
    /// may come from memory.
    NotPossible,
};

/// Whether what is read of a disk, which is the kernel's folder of it, comes from hardware of this
/// machine. A file that stands for a disk is remembered as any file is, unless whoever made it one
/// asked for direct transfers to a file system that does so; behind most other disks that no driver
/// of hardware made is memory, another machine or another program. Blocks as that file does.
bool answersFromHardware(const std::filesystem::path& disk);

/// Empties the cache of the device under the volume that holds `path`, once all of it is written.
/// Reports no failure but in what it gives.
Drop drop(const std::filesystem::path& path);

} // namespace slatewise::DeviceCache
