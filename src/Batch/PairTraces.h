#pragma once

#include "Batch/BatchPlan.h"
#include "Language/AppLanguage.h"
#include "Offload/OffloadRows.h"
#include "Storage/AppDatabase.h"

#include <filesystem>

namespace slatewise::PairTraces {

/// The report set of a pair, as far as it got. Empty paths: not written.
struct Folders {
    std::filesystem::path inArchive;
    std::filesystem::path onDestination;
};

/// Leaves all that remains of a finished pair but the footage: the report set in the archive and on
/// the destination, the session in the store, a line in the log, and a report that waits for the
/// service. In this order; a report that cannot be written is thrown and ends it, a store that
/// cannot be is a line in the log. Blocks; any thread.
///
/// `folders` is filled in on the way, so that it says what there is after a failure too.
void leave(const BatchPlan& plan, const BatchPair& pair, const OffloadOutcome& outcome,
           AppDatabase& database, Folders& folders);

} // namespace slatewise::PairTraces
