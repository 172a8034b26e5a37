#pragma once

#include "Platform/Clock.h"
#include "Platform/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>

/// What we ask of a file system beyond reading and writing footage. Paths are bytes. Every function
/// blocks its caller and, unless it says otherwise, fails with `PosixError`.
namespace slatewise::FileSystem {

enum class ItemType {
    RegularFile,
    Folder,
    SymbolicLink,
    /// A FIFO, a socket or a device: something that must never be opened as data.
    Special,
};

struct Attributes {
    ItemType type = ItemType::RegularFile;
    std::int64_t sizeBytes = 0;
    std::optional<Instant> modified;
    std::optional<Instant> created;
    /// The modification date as the system keeps it: to the nanosecond, and of any year.
    std::optional<timespec> exactModified;
    /// When anything about the item changed last, which nobody can set.
    std::optional<timespec> changed;
    /// Of the item in its file system, which may give it to another once this one is gone.
    std::uint64_t number = 0;
};

/// Attributes of the item itself; a symbolic link is not followed. `name` is taken relative to the
/// open folder. Empty, with the reason in `errno`, when they cannot be had.
std::optional<Attributes> attributesIn(int folderDescriptor, const char* name) noexcept;

/// Attributes of what is open, `flags` being those of `statx`. Empty, with the reason in `errno`,
/// when they cannot be had.
std::optional<Attributes> attributesOf(int descriptor, int flags = 0) noexcept;

/// Attributes of the item, of the target if it is a symbolic link.
Attributes attributes(const std::filesystem::path& path);

/// As `attributes`, empty when they cannot be had for whatever reason.
std::optional<Attributes> attributesIfAny(const std::filesystem::path& path) noexcept;

/// Whether anything bears that name, a dangling link included.
bool exists(const std::filesystem::path& path) noexcept;

/// Paths of all that lies in a folder; of what can be listed, should that fail. Never fails itself.
std::set<std::filesystem::path> entriesIfAny(const std::filesystem::path& folder);

/// Makes a folder with all its parents, such that they survive a power cut. A folder that is there
/// already is no failure.
void createFolders(const std::filesystem::path& folder);

/// Makes one folder whose parent exists. False when something bears that name already.
bool createNewFolder(const std::filesystem::path& folder);

/// Removes a file, a link or a whole folder.
void remove(const std::filesystem::path& path);

/// Sets the modification date and nothing else.
void setModified(const std::filesystem::path& path, timespec moment);

/// Writes all of a text to what is open, in as many pieces as the system takes. `path` is for
/// messages.
void writeAll(const FileDescriptor& file, std::string_view content,
              const std::filesystem::path& path);

/// The same, and waits until it is on the disk.
void writeAndSync(const FileDescriptor& file, std::string_view content,
                  const std::filesystem::path& path);

/// Takes a text piece by piece, in its order.
using TextSink = std::function<void(std::string_view)>;
/// Makes a text that may be too long to be held as a whole.
using TextSource = std::function<void(const TextSink&)>;

/// The same of a text as it is made.
void writeAndSync(const FileDescriptor& file, const TextSource& content,
                  const std::filesystem::path& path);

/// The whole content of a file.
std::string read(const std::filesystem::path& path);

/// The rest of what is open. Fails with `EFBIG` when that is longer than `largestBytes`.
std::string readAll(const FileDescriptor& file, std::int64_t largestBytes,
                    const std::filesystem::path& path);

/// Appends a line's bytes in one write to a file that is its owner's alone and made if need be.
void append(const std::filesystem::path& path, std::string_view content);

/// Waits until the folder's entries are on the disk: what was made, renamed or removed in it.
void syncFolder(const std::filesystem::path& folder);

/// Waits until everything written to the volume that holds `path`, folder entries included, would
/// survive a power cut.
void syncVolume(const std::filesystem::path& path);

struct Capacity {
    std::int64_t total = 0;
    std::int64_t free = 0;
};

/// Size of the volume that holds `path` and what an ordinary user may still write, in bytes; both 0
/// when that cannot be learnt. Never fails.
Capacity volumeCapacity(const std::filesystem::path& path) noexcept;

} // namespace slatewise::FileSystem
