#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Turns a source tree into a sorted inventory and decides, by name, what is not copied. Everything
/// blocks its caller.
namespace slatewise::TreeWalker {

/// System leftovers that no card's content is.
const SkipNames& defaultSkipNames();

/// Told of a folder that could not be read, or not to its end, and why. What lies in it is missing
/// from the inventory.
using UnreadableFolder = std::function<void(const std::filesystem::path& folder, int code)>;

/// Lists everything under `root`, sorted by the bytes of the relative path.
///
/// Hidden items are listed; below a skipped folder nothing is. An unreadable folder is passed over
/// and handed to `onUnreadable`; so is a root that cannot be listed, which gives an empty
/// inventory.
///
/// A symbolic link is not walked into. One that leads to a regular file is listed with that file's
/// size and dates, and what is copied is that file's bytes. One that leads to a folder or to
/// nothing has no bytes of its own: it is listed with `shouldCopy` false.
///
/// Fails with `PosixError` when an item's attributes cannot be read, or when the process has no
/// room left to go on.
std::vector<InventoryEntry> walk(const std::filesystem::path& root, const SkipNames& skipNames,
                                 std::span<const std::string> extraExcludes = {},
                                 const UnreadableFolder& onUnreadable = {});

/// Whether the item is left out: by its own name, or by a folder's name on its way.
bool shouldSkip(std::string_view relative, std::string_view name, const SkipNames& skipNames);

/// The name in what a user typed, who may have typed a path. Empty when there is none.
std::optional<std::string> normalizeSkipName(std::string_view raw);

/// Sum of the sizes that a run would copy; 0 when the tree cannot be walked. Never fails.
std::int64_t copyableBytes(const std::filesystem::path& folder, const SkipNames& skipNames,
                           std::span<const std::string> extraExcludes = {});

/// Path of `item` below `base`: empty for the base itself, the last component for what lies
/// elsewhere.
std::string relativePath(const std::filesystem::path& item, const std::filesystem::path& base);

} // namespace slatewise::TreeWalker
