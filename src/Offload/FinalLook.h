#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"

#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

/// What is looked at once everything was read, written and proved. A proof is one of the moment:
/// card and disk stay in the hands of cameras, programs and people meanwhile. Without state;
/// everything blocks its caller.
namespace slatewise::FinalLook {

/// What became of a copy since it was proved.
enum class CopyState {
    AsProved,
    /// Nothing bears its name, or something else does, or it is not as long as it was.
    Gone,
    /// Somebody wrote into it, or put another file of its length there.
    Rewritten,
};

/// When the copy was modified last, by the disk's own word. To be asked before it is proved.
std::int64_t modifiedSeconds(const RootFolder& session, const std::string& copy);

/// `modified` is what `modifiedSeconds` gave. Never fails: what cannot be seen is gone.
///
/// Dates count by the two seconds that the coarsest file systems keep. A copy has its source's
/// date, which lies before the run, so that whatever is written later stands out.
CopyState stateOf(const RootFolder& session, const FileCopyResult& copy, std::int64_t modified);

/// How the card differs from what was read of it.
struct CardChanges {
    /// Files that were rewritten, replaced, resized or removed.
    std::set<std::string> files;
    /// Files to copy that were not there, in the inventory's order.
    std::vector<InventoryEntry> newcomers;

    bool isEmpty() const noexcept { return files.empty() && newcomers.empty(); }
};

/// Walks the card once more and compares it with its inventory, which is sorted as `TreeWalker`
/// gives it. Only what is to be copied counts. `unreadable` is told of folders as it is there.
///
/// A file is known by its size and its dates. Inodes are not compared, since some file systems
/// number a file anew each time they meet it.
///
/// Fails as `TreeWalker::walk` does.
CardChanges findChanges(const RootFolder& card, std::span<const InventoryEntry> inventory,
                        const SkipNames& skipNames,
                        const std::function<void(const std::string& folder, int code)>& unreadable);

} // namespace slatewise::FinalLook
