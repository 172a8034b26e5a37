#include "Reports/SessionSummary.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Reports/ReportText.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace slatewise {

namespace {

using Facts = std::vector<SessionSummary::Fact>;

void add(Facts& facts, L10n::Text label, const std::string& value) {
    if (!value.empty())
        facts.push_back({std::string(label), value});
}

std::string verdictOf(OutcomeStatus status, const L10n& l10n) {
    switch (status) {
    case OutcomeStatus::Verified:
        return std::string(l10n.verdictVerified());
    case OutcomeStatus::Hashed:
        return std::string(l10n.verdictHashed());
    case OutcomeStatus::Failed:
        break;
    }
    return std::string(l10n.verdictFailed());
}

std::string meaningOf(OutcomeStatus status, const L10n& l10n) {
    switch (status) {
    case OutcomeStatus::Verified:
        return std::string(l10n.verdictVerifiedMeaning());
    case OutcomeStatus::Hashed:
        return std::string(l10n.verdictHashedMeaning());
    case OutcomeStatus::Failed:
        break;
    }
    return std::string(l10n.verdictFailedMeaning());
}

/// Every file is in one of the numbers; those that are zero and bad news are told, too.
std::string filesByFate(const SessionManifest& manifest, const L10n& l10n) {
    const auto& counts = manifest.counts;
    auto text =
        manifest.wasHashing()
            ? l10n.reportHashedCounts(counts.filesHashed, counts.filesSkippedSystem,
                                      counts.filesFailed)
            : l10n.reportCounts(counts.filesCopied, counts.filesSkippedSystem, counts.filesFailed);
    const auto unproved =
        std::count_if(manifest.files.begin(), manifest.files.end(), [](const ManifestFile& file) {
            return file.verifyStatus == VerifyStatus::CopiedUnverified;
        });
    if (unproved > 0)
        text += ", " + l10n.reportUnproved(static_cast<int>(unproved));
    return text;
}

void addPace(Facts& facts, const SessionManifest& manifest, const L10n& l10n) {
    const std::chrono::duration<double> took = manifest.finishedAt - manifest.startedAt;
    if (took.count() < 0)
        return;
    add(facts, l10n.colDuration(),
        fmt::format("{} {}", static_cast<std::int64_t>(std::ceil(took.count())),
                    l10n.secondsUnit()));
    if (took.count() > 0 && manifest.bytesHandled() > 0)
        add(facts, l10n.reportSpeed(),
            PathSize::speed(static_cast<double>(manifest.bytesHandled()) / took.count(),
                            l10n.language()));
}

} // namespace

SessionSummary SessionSummary::of(const SessionManifest& manifest, const L10n& l10n) {
    SessionSummary summary;
    summary.status = manifest.status;
    summary.verdict = verdictOf(manifest.status, l10n);
    summary.meaning = meaningOf(manifest.status, l10n);
    add(summary.identity, l10n.reportCard(), manifest.card.name);
    add(summary.identity, l10n.reportCamera(), manifest.card.camera);
    add(summary.identity, l10n.reportCrew(), manifest.card.ekip);
    add(summary.times, l10n.reportStarted(),
        ReportText::dateTime(manifest.startedAt, l10n.language()));
    add(summary.times, l10n.reportFinished(),
        ReportText::dateTime(manifest.finishedAt, l10n.language()));
    add(summary.totals, l10n.reportFiles(), filesByFate(manifest, l10n));
    add(summary.totals, l10n.reportSize(),
        PathSize::report(manifest.bytesHandled(), l10n.language()));
    addPace(summary.totals, manifest, l10n);
    return summary;
}

std::string onOneLine(const std::vector<SessionSummary::Fact>& facts) {
    std::string line;
    for (const auto& fact : facts) {
        if (!line.empty())
            line += "  ·  ";
        line += fact.label + " " + fact.value;
    }
    return line;
}

} // namespace slatewise
