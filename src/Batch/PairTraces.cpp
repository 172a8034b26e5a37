#include "Batch/PairTraces.h"

#include "Batch/PairSets.h"
#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Service/OutboxPayload.h"
#include "Storage/AppLog.h"
#include "Storage/StoreFailure.h"

#include <fmt/format.h>

namespace slatewise::PairTraces {

namespace {

using Kind = OffloadProblem::Kind;

/// Writing the sets takes its time, and whoever reads "verified" in one reads it now.
void lookOnceMore(PairRecord& record, bool isDiskInPlace, ProvedCopies* copies,
                  const std::stop_token& stop) {
    if (!isDiskInPlace)
        return record.fail({Kind::DiskReplaced, record.pair().destination.name()});
    if (!copies)
        return;
    const auto changes = copies->findChanges(record.rows(), stop);
    record.fail(changes);
    if (changes.empty())
        return;
    // They stand beside the copies, and were written when all was well.
    for (const auto& list : record.outcome().hashLists)
        record.fail({Kind::ReportsOutdated, (record.outcome().sessionRoot / list).native()});
}

OffloadProblem ofStore(Kind kind, const BatchPair& pair, const std::exception& failure) {
    AppLog::append("Store not written: " + describe(failure));
    return {kind, pair.card.name(),
            BothLanguages::of([&](L10n l10n) { return StoreFailure::reasonOf(failure, l10n); })};
}

void save(const PairRecord& record, const std::filesystem::path& reports, AppDatabase& database,
          const QueuedReport* report = nullptr) {
    const auto& pair = record.pair();
    const bool hasUUID = !pair.card.isPickedFolder();
    database.save(record.outcome(), record.manifest().files, pair.card.facts.volumeName,
                  pair.destination.facts.volumeName, pair.camera,
                  {.ekip = pair.ekip,
                   .reportFolder = reports.native(),
                   .cardUUID = hasUUID ? pair.card.facts.volumeUUID.value_or("") : ""},
                  report);
}

/// One after the other: what cannot be kept costs the other nothing.
void saveApart(PairRecord& record, const std::filesystem::path& reports, AppDatabase& database,
               const QueuedReport& report) {
    try {
        save(record, reports, database);
    } catch (const std::exception& failure) {
        record.note(ofStore(Kind::SessionNotStored, record.pair(), failure));
    }
    try {
        database.enqueueOutbox(report);
    } catch (const std::exception& failure) {
        const auto problem = ofStore(Kind::SessionNotQueued, record.pair(), failure);
        if (record.plan().serviceProfile)
            record.note(problem);
        else
            AppLog::append(problem.logLine());
    }
}

/// Session and report at once: whoever is killed between the two would leave a session that the
/// service never hears of.
void store(PairRecord& record, const std::filesystem::path& reports, AppDatabase& database) {
    const auto& outcome = record.outcome();
    if (const auto aside = database.takeSetAside())
        record.note({Kind::HistorySetAside, aside->native()});
    const auto report = queuedReport(record.manifest());
    try {
        save(record, reports, database, &report);
    } catch (const std::exception& failure) {
        AppLog::append("Session and report not stored at once: " + describe(failure));
        saveApart(record, reports, database, report);
    }
    AppLog::append(fmt::format("Offload {} card={} dest={} files={} bytes={}",
                               rawValue(outcome.status), record.pair().card.facts.volumeName,
                               record.pair().destination.facts.volumeName,
                               record.manifest().files.size(), outcome.bytesCopied));
}

} // namespace

void leave(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
           ProvedCopies* copies, AppDatabase& database, const Tell& tell,
           const std::stop_token& stop, const Waiter& waiter) {
    const auto isInTime = [&](Step step) {
        return !waiter.isAwaited || waiter.isAwaited(step);
    };
    PairRecord record(plan, pair, outcome, tell, stop);
    PairSets sets(record);
    sets.make();
    lookOnceMore(record, sets.isDiskInPlace(), copies, stop);
    if (!isInTime(Step::Placing))
        record.fail({Kind::ReportsNotAwaited, pair.name});
    sets.bringUpToDate();
    sets.putInPlace([&] { return isInTime(Step::Placed); }, [&] { return isInTime(Step::Ended); });
    // The service is told what became of them, too.
    if (outcome.status == OutcomeStatus::Failed)
        record.renew();
    if (waiter.settled)
        waiter.settled({.inArchive = sets.inArchive(),
                        .onDestination = sets.onDestination(),
                        .shown = sets.shown(),
                        .filesProved = record.filesProved()});
    store(record, sets.shown(), database);
}

} // namespace slatewise::PairTraces
