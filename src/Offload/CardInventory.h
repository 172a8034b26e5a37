#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Offload/RunReporter.h"
#include "Platform/Disks/FileSystemErrors.h"

#include <cstdint>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise {

/// What one run finds on its card, before its first file and after its last. On the run's thread.
class CardInventory {
public:
    /// Walks the card and reports what was passed over. Fails as `TreeWalker::walk` does, with
    /// `CancellationError` once `stop` is requested. Card and reporter must outlive it.
    CardInventory(const RootFolder& card, SkipNames skipNames, RunReporter& reporter,
                  const std::stop_token& stop);

    CardInventory(const CardInventory&) = delete;
    CardInventory& operator=(const CardInventory&) = delete;

    /// All that there is, sorted by path.
    const std::vector<InventoryEntry>& entries() const { return entries_; }

    /// Into `entries`, in its order.
    const std::vector<const InventoryEntry*>& copyList() const { return copyList_; }

    std::int64_t totalBytes() const { return totalBytes_; }

    /// False when something was not read, then or in the last look: no row can speak for it.
    bool isWhole() const { return isWhole_; }

    /// What is read of an entry has to be the file that was listed. Who exchanges one on the way,
    /// or a folder, and puts it back leaves nothing for the last look to see.
    void noteOpened(const InventoryEntry& entry, const FileSystem::Attributes& file);

    /// Whether what was read is what lies on the card now; else marks rows, adds those of files
    /// that came meanwhile, and reports.
    bool findsCardUnchanged(std::vector<FileCopyResult>& rows);

private:
    void noteUnreadable(const std::string& path, int code);
    bool liesInFolderNotRead(const std::string& path) const;
    void noteErrors(const FileSystemErrors& again);

    const RootFolder& card_;
    const SkipNames skipNames_;
    RunReporter& reporter_;
    bool isWhole_ = true;
    const FileSystemErrors errors_;
    std::set<std::string> notRead_;
    std::set<std::string> exchanged_;
    std::vector<InventoryEntry> entries_;
    std::vector<const InventoryEntry*> copyList_;
    std::int64_t totalBytes_ = 0;
    /// While the card was listed for the first time.
    bool hasDeviceMetErrors_ = false;
};

} // namespace slatewise
