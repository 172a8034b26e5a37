#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace slatewise {

/// One line of the kernel's table.
struct Mount {
    /// The line itself: as long as it stays the same, this is the same mount.
    std::string line;
    /// Numbers of the device. For file systems without one of their own, and for Btrfs, numbers
    /// that stand for no device.
    dev_t device = 0;
    /// What of the file system is shown: "/", or a folder or subvolume of it.
    std::string root;
    std::filesystem::path mountPoint;
    /// As the kernel calls it: "ext4", "fuseblk".
    std::string fileSystem;
    /// "/dev/sdb1", "//server/share", or whatever whoever mounted it chose to say.
    std::string source;
    bool isReadOnly = false;
};

/// What is mounted where, as the kernel tells it. Reading it touches none of the file systems, so
/// none can make it hang.
namespace MountTable {

inline const std::filesystem::path ofThisProcess = "/proc/self/mountinfo";

/// Lines that are none are left out.
std::vector<Mount> parse(std::string_view text);

/// Empty when the table cannot be read.
std::vector<Mount> read(const std::filesystem::path& table = ofThisProcess);

/// What one sees at that very path: the last of several mounted over each other. Null when nothing
/// is mounted there. The path must be absolute and lead through no links.
const Mount* at(const std::vector<Mount>& mounts, const std::filesystem::path& mountPoint);

/// The mount that a file or folder lies in. The same holds for the path.
const Mount* holding(const std::vector<Mount>& mounts, const std::filesystem::path& path);

} // namespace MountTable

} // namespace slatewise
