#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace slatewise {

/// By which a folder is known again, whatever comes to bear its path. A value.
struct FolderIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    /// Of the mount that the path leads through. Older kernels use a number again.
    std::uint64_t mount = 0;
    /// UUID of the file system; empty when nobody says.
    std::string fileSystem{};
    /// Counts the media that this machine has seen, each one anew when it is put in again; 0 when
    /// unknown.
    std::uint64_t medium = 0;

    /// Of what is open. Empty, with the reason in `errno`, when it cannot be had. Asks the kernel
    /// and, for the UUID, the disk service's records; never the disk.
    static std::optional<FolderIdentity> of(int descriptor) noexcept;

    /// Of the folder at the path; waits as long as its file system takes to find it.
    static std::optional<FolderIdentity> at(const std::filesystem::path& path) noexcept;

    /// The number of the medium that the device holds now; 0 when there is none, or none that is
    /// counted. Empty when the process has no room left to ask.
    static std::optional<std::uint64_t> mediumIn(dev_t device) noexcept;

    /// Whether both are one folder of one file system, as far as can be told. Where nothing else
    /// tells file systems apart, one that was mounted anew is another.
    bool isSame(const FolderIdentity& other) const noexcept;

    friend bool operator==(const FolderIdentity&, const FolderIdentity&) = default;
};

} // namespace slatewise
