#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

/// Turns a source tree into a sorted inventory and decides, by name, what is not copied. Everything
/// blocks its caller.
namespace slatewise::TreeWalker {

/// System leftovers that no card's content is.
const SkipNames& defaultSkipNames();

/// What a walk met that a person may have to know. Any may be empty. Paths are relative.
struct WalkObserver {
    /// A folder could not be read, or not to its end, and why: what lies in it is missing from the
    /// inventory. Or an item of whatever kind, which is missing itself. Empty: the root.
    std::function<void(const std::string& path, int code)> unreadable;
    /// A link leads out of the tree; what it leads to was not looked at.
    std::function<void(const std::string& link)> leadsOut{};
    /// A link leads to nothing, through a file, or in a circle.
    std::function<void(const std::string& link)> leadsNowhere{};
    /// A link leads to a folder, a FIFO or the like.
    std::function<void(const std::string& link)> leadsToNoFile{};
    /// Ends the walk, with `CancellationError`.
    std::stop_token stop{};
};

/// Lists everything under `root`, sorted by the bytes of the relative path.
///
/// Hidden items are listed; below a skipped folder nothing is. An unreadable folder is passed over
/// and told.
///
/// A symbolic link is not walked into. One that leads to a regular file of the same tree is listed
/// with that file's size and dates, and what is copied is that file's bytes. One that leads to
/// anything else, to nothing or out of the tree has no bytes of its own: it is listed with
/// `shouldCopy` false.
///
/// Fails with `PosixError` when the root cannot be opened, or when the process has no room left to
/// go on.
std::vector<InventoryEntry> walk(const RootFolder& root, const SkipNames& skipNames,
                                 std::span<const std::string> extraExcludes = {},
                                 const WalkObserver& observer = {});

/// By which a later look tells that a file was written or exchanged: `InventoryEntry::changes`.
std::array<std::int64_t, 4> changesOf(const FileSystem::Attributes& attributes);

/// Whether the item is left out: by its own name, or by a folder's name on its way.
bool shouldSkip(std::string_view relative, std::string_view name, const SkipNames& skipNames);

/// Whether the file system itself made the folder when it was formatted, for what it finds when it
/// is repaired. A camera or a person may name a folder so too, and its footage counts. Never fails.
bool isRepairFolder(const RootFolder& root, const std::string& relative);

/// The name in what a user typed, who may have typed a path. Empty when there is none.
std::optional<std::string> normalizeSkipName(std::string_view raw);

/// Sum of the sizes that a run would copy; 0 when the tree cannot be walked. Never fails.
std::int64_t copyableBytes(const std::filesystem::path& folder, const SkipNames& skipNames,
                           std::span<const std::string> extraExcludes = {});

/// Path of `item` below `base`: empty for the base itself, the last component for what lies
/// elsewhere.
std::string relativePath(const std::filesystem::path& item, const std::filesystem::path& base);

} // namespace slatewise::TreeWalker
