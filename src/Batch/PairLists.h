#pragma once

#include "Batch/BatchPlan.h"
#include "MediaHashList/TransferLists.h"
#include "Offload/CopyRequest.h"
#include "Offload/OffloadRows.h"

#include <functional>

namespace slatewise {

/// The hash lists of one pair: those that the card brings, and, where the settings want them, those
/// of the copy. One thread at a time.
class PairLists {
public:
    explicit PairLists(const OffloadSettings& settings);

    /// Has a run read the lists that the card brings and compute what is to be held against them or
    /// written. The request refers to this object.
    void follow(CopyEngine::Request& request);

    /// Holds the card against the lists that it brings, and writes those of the copy
    /// where they are wanted. What goes wrong becomes a problem of the outcome, which is told to
    /// `tell` too; nothing is thrown.
    void settle(const BatchPair& pair, OffloadOutcome& outcome,
                const std::function<void(const OffloadProblem&)>& tell) const;

private:
    MediaHashList::TransferLists lists_;
    const bool writes_;
};

} // namespace slatewise
