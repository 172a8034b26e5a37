#pragma once

#include "Batch/BatchPlan.h"
#include "MediaHashList/TransferLists.h"
#include "Offload/CopyRequest.h"
#include "Offload/OffloadRows.h"

#include <functional>
#include <optional>

namespace slatewise {

/// The hash lists of one pair, where the settings want any. One thread at a time.
class PairLists {
public:
    explicit PairLists(const OffloadSettings& settings);

    /// Has a run compute what the lists need, and tell whether the card brings any. The request
    /// refers to this object.
    void follow(CopyEngine::Request& request);

    /// Holds the card against the lists that it brings, and writes those of the copy. What goes
    /// wrong becomes a problem of the outcome, which is told to `tell` too; nothing is thrown.
    void settle(const BatchPair& pair, OffloadOutcome& outcome,
                const std::function<void(const OffloadProblem&)>& tell) const;

private:
    /// Empty when the settings want none.
    std::optional<MediaHashList::TransferLists> lists_;
    /// The card brings lists that nobody looks at.
    bool areCardsPassedOver_ = false;
};

} // namespace slatewise
