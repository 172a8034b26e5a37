#pragma once

#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "Offload/OffloadRows.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"

#include <exception>
#include <filesystem>
#include <map>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace slatewise::MediaHashList {

/// The hash lists of one run: those that the card brings, which are held against what the card
/// holds now, and the generations that are written of what was proved. One thread at a time.
class TransferLists {
public:
    explicit TransferLists(OffloadSettings settings) : settings_(std::move(settings)) {}

    /// Whether a card brings any that would be copied.
    static bool areAmong(std::span<const InventoryEntry> entries);

    /// Reads every history of a card. One that cannot be read is told by `differences`. Fails with
    /// `CancellationError` when asked to stop.
    void readHistories(const RootFolder& card, std::span<const InventoryEntry> entries,
                       const std::stop_token& stop = {});

    /// What is to be computed of a file beyond its SHA-256: whatever the card's lists have of it,
    /// and xxh128 where a list is to be written.
    std::vector<HashFormat> formatsOf(const std::string& path) const;

    /// Where the card is not what its own lists say, or one of these could not be read.
    std::vector<OffloadProblem> differences(const OffloadOutcome& outcome) const;

    /// Writes the generations of a run, beneath `destination`, and sees them onto the disk.
    /// `session` is the session's folder there. Nothing is written when nothing was copied or
    /// proved, or when a history of the card could not be read and so cannot go on. A failure is
    /// part of what it gives.
    AddedGenerations write(const RootFolder& destination, const std::filesystem::path& session,
                           const OffloadOutcome& outcome) const;

private:
    struct UnreadableHistory {
        std::filesystem::path place;
        std::exception_ptr failure;
    };

    void meetOtherForms(const std::unordered_set<std::string_view>& present);
    HashedTree treeOf(const OffloadOutcome& outcome) const;

    const OffloadSettings settings_;
    std::vector<std::string> withHistory_;
    /// Of all histories together, by the path on the card.
    KnownValues known_;
    /// Of files whose names the histories have in another form: that form, by the path on the card.
    std::map<std::string, std::string> listedAs_;
    std::vector<std::string> missing_;
    /// Lie where a history could name them, which does not.
    std::vector<std::string> unlisted_;
    std::vector<UnreadableHistory> unreadable_;
};

} // namespace slatewise::MediaHashList
