#include "Batch/PairTraces.h"

#include "Platform/Error.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Service/OutboxPayload.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

#include <fmt/format.h>

namespace slatewise::PairTraces {

namespace {

/// Footage that was proved and reported is no less so because the history could not be written.
void store(const BatchPair& pair, const OffloadOutcome& outcome, AppDatabase& database) {
    try {
        database.save(outcome, pair.card.facts.volumeName, pair.destination.facts.volumeName,
                      pair.camera);
    } catch (const std::exception& failure) {
        AppLog::append("Session not stored: " + describe(failure));
    }
}

} // namespace

void leave(const BatchPlan& plan, const BatchPair& pair, const OffloadOutcome& outcome,
           AppDatabase& database, Folders& folders) {
    const auto& card = pair.card.facts;
    const auto& destination = pair.destination.facts;
    const auto manifest = ReportWriter::buildManifest(outcome, card, destination, pair.camera,
                                                      pair.ekip, plan.language);
    const auto archive = SupportPaths::reportsArchive(plan.settings);
    const auto reportsRoot = ReportFolder::destinationReportsRoot(destination.mountPoint);
    const auto wanted =
        ReportFolder::displayName(outcome.startedAt, pair.ekip, pair.camera, card.volumeName);
    // What lies beneath a disk that is gone is none of ours.
    const auto requireFolders = [&] {
        if (const auto missing = pair.findMissingFolder())
            throw Error(missing->text(plan.l10n()));
    };
    const auto name =
        pair.findMissingFolder()
            ? ReportFolder::uniqueName(wanted, outcome.sessionID.text(), archive)
            : ReportFolder::claim(wanted, outcome.sessionID.text(), archive, reportsRoot);

    ReportWriter::write(manifest, archive / name, plan.language);
    folders.inArchive = archive / name;
    const auto onDestination = reportsRoot / name;
    requireFolders();
    ReportWriter::copySidecars(folders.inArchive, onDestination);
    folders.onDestination = onDestination;

    store(pair, outcome, database);
    AppLog::append(fmt::format("Offload {} card={} dest={} files={} bytes={}",
                               rawValue(outcome.status), card.volumeName, destination.volumeName,
                               outcome.files.size(), outcome.bytesCopied));
    selfEnqueue(outcome, pair.card, pair.destination, manifest, database);
}

} // namespace slatewise::PairTraces
