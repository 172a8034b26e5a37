#include "support/Reports.h"

#include "Reports/ReportWriter.h"
#include "Storage/AppDatabase.h"
#include "support/Offloads.h"

namespace slatewise::test {

OffloadOutcome reportedOutcome(OutcomeStatus status, int copied) {
    OffloadOutcome outcome;
    outcome.sessionID = Uuid::random();
    outcome.sessionRoot = "/media/SSD/2026-03-01/A001";
    outcome.status = status;
    outcome.bytesCopied = 25'000'000;
    outcome.startedAt = *Clock::fromIso8601("2026-03-01T09:30:15Z");
    outcome.finishedAt = outcome.startedAt + std::chrono::seconds(10);
    for (int number = 0; number < copied; ++number) {
        auto& file = outcome.files.emplace_back();
        file.relativePath = "DCIM/" + std::to_string(number) + ".mov";
        file.sizeBytes = number;
        file.action = RowAction::Copy;
        file.sourceSHA256 = file.destSHA256 = std::string(64, 'a');
        file.mtime = outcome.startedAt;
        file.verifyStatus = VerifyStatus::Verified;
    }
    auto& skipped = outcome.files.emplace_back();
    skipped.relativePath = ".DS_Store";
    skipped.action = RowAction::Skip;
    skipped.verifyStatus = VerifyStatus::Skipped;
    return outcome;
}

SessionManifest manifestOf(const OffloadOutcome& outcome, const std::string& cardName) {
    return ReportWriter::buildManifest(
        outcome, outcome.files, volumeAt("/media/card", cardName).facts,
        volumeAt("/media/SSD", "SSD").facts, "CamA", "Unit1", AppLanguage::English);
}

std::string payloadOf(const SessionManifest& manifest) {
    std::string text;
    writePayload(manifest, [&](std::string_view piece) { text += piece; });
    return text;
}

void enqueueReport(const OffloadOutcome& outcome, AppDatabase& database,
                   const std::string& cardName) {
    const auto manifest = manifestOf(outcome, cardName);
    database.enqueueOutbox(queuedReport(manifest));
}

} // namespace slatewise::test
