#include "Offload/FinalLook.h"

#include "Offload/TreeWalker.h"

#include <algorithm>

namespace slatewise::FinalLook {

namespace {

/// The first from `from` on that is to be copied.
template <typename Iterator>
Iterator nextToCopy(Iterator from, Iterator end) {
    return std::find_if(from, end, [](const auto& entry) { return entry.shouldCopy; });
}

bool isUnchanged(const InventoryEntry& before, const InventoryEntry& now) {
    return before.sizeBytes == now.sizeBytes && before.changes == now.changes;
}

} // namespace

CardChanges
findChanges(const RootFolder& card, std::span<const InventoryEntry> inventory,
            const SkipNames& skipNames,
            const std::function<void(const std::string& folder, int code)>& unreadable) {
    auto found = TreeWalker::walk(card, skipNames, {}, {.unreadable = unreadable});
    CardChanges changes;
    auto before = nextToCopy(inventory.begin(), inventory.end());
    auto now = nextToCopy(found.begin(), found.end());
    // Both are sorted, so that one pass meets every pair.
    while (before != inventory.end() || now != found.end()) {
        const bool isGone = now == found.end() ||
                            (before != inventory.end() && before->relativePath < now->relativePath);
        const bool isNew = before == inventory.end() ||
                           (now != found.end() && now->relativePath < before->relativePath);
        if (isNew)
            changes.newcomers.push_back(std::move(*now));
        else if (isGone || !isUnchanged(*before, *now))
            changes.files.insert(before->relativePath);
        if (!isNew)
            before = nextToCopy(std::next(before), inventory.end());
        if (!isGone)
            now = nextToCopy(std::next(now), found.end());
    }
    return changes;
}

} // namespace slatewise::FinalLook
