#pragma once

#include "Batch/PairRecord.h"
#include "Offload/OffloadRows.h"
#include "Offload/ProvedCopies.h"
#include "Storage/AppDatabase.h"

#include <filesystem>
#include <functional>
#include <stop_token>

namespace slatewise::PairTraces {

/// The report set of a pair, as far as it got. Empty paths: not written.
struct Folders {
    std::filesystem::path inArchive;
    std::filesystem::path onDestination;
    /// The one of them whose pages are shown.
    std::filesystem::path shown;
    /// Files that are still what was proved.
    int filesProved = 0;
};

/// Where the sets of a pair have got to.
enum class Step {
    /// They are made, and one after the other is put in place from now on.
    Placing,
    /// One stands.
    Placed,
    /// All stand.
    Ended,
};

/// Whoever waits for the traces of a pair. Called on the worker; either may be empty.
struct Waiter {
    /// Is told how far it is, and says whether it is awaited still.
    std::function<bool(Step)> isAwaited{};
    /// The pair has ended, as the outcome says by then. What follows is the history, which may have
    /// to wait for others.
    std::function<void(const Folders&)> settled{};
};

using Tell = PairRecord::Tell;

/// Leaves all that remains of a finished pair but the footage: the report set in the archive and on
/// the destination, the session in the store, a line in the log, and a report that waits for the
/// service; takes its rows. In this order, each whatever became of those before it; a disk that is
/// not the chosen one any more gets nothing, nor does an archive that has gone. A trace that cannot
/// be left is a problem, told and added to the outcome; a set that has no room in the archive may
/// have it on the disk, and one whose pages cannot be made has its lists. Without its reports an
/// offload has failed, and so say all of its traces: a set that says otherwise is taken away, and
/// told of where it cannot be. Without its line in the history it has not. The `copies`, where
/// there are any, are looked at once more when the reports are written, and told of by them; once
/// `stop` is requested none is read for that, and an offload that needed it has failed. So has one
/// that is not `isAwaited` any more, which is asked at each step: whoever waited for it has told
/// so. All three folders of the pair are held. Blocks; any thread.
void leave(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
           ProvedCopies* copies, AppDatabase& database, const Tell& tell,
           const std::stop_token& stop, const Waiter& waiter = {});

} // namespace slatewise::PairTraces
