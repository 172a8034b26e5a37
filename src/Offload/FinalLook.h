#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"

#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

/// What is looked at on the card once everything was read, written and proved: it stays in the
/// hands of cameras, programs and people meanwhile. Without state; everything blocks its caller.
namespace slatewise::FinalLook {

/// How the card differs from what was read of it.
struct CardChanges {
    /// Files that were rewritten, replaced, resized or removed.
    std::set<std::string> files;
    /// Files to copy that were not there, in the inventory's order.
    std::vector<InventoryEntry> newcomers;

    bool isEmpty() const noexcept { return files.empty() && newcomers.empty(); }
};

/// Walks the card once more and compares it with its inventory, which is sorted as `TreeWalker`
/// gives it. Only what is to be copied counts. `unreadable` is told as it is there.
///
/// A file is known by its size and its dates. Inodes are not compared, since some file systems
/// number a file anew each time they meet it.
///
/// Fails as `TreeWalker::walk` does.
CardChanges findChanges(const RootFolder& card, std::span<const InventoryEntry> inventory,
                        const SkipNames& skipNames,
                        const std::function<void(const std::string& folder, int code)>& unreadable);

} // namespace slatewise::FinalLook
