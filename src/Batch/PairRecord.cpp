#include "Batch/PairRecord.h"

#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"
#include "Reports/ReportWriter.h"
#include "Storage/AppLog.h"

#include <algorithm>
#include <utility>

namespace slatewise {

PairRecord::PairRecord(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
                       const Tell& tell, const std::stop_token& stop)
    : plan_(plan), pair_(pair), outcome_(outcome), tell_(tell), stop_(stop),
      manifest_(manifestOf(std::exchange(outcome.files, {}))) {}

int PairRecord::filesProved() const {
    return static_cast<int>(
        std::count_if(manifest_.files.begin(), manifest_.files.end(),
                      [](const auto& row) { return row.verifyStatus == VerifyStatus::Verified; }));
}

void PairRecord::renew() {
    manifest_ = manifestOf(std::move(manifest_.files));
}

void PairRecord::note(const OffloadProblem& problem) {
    outcome_.problems.push_back(problem);
    if (tell_)
        tell_(problem);
}

void PairRecord::fail(const OffloadProblem& problem) {
    fail({&problem, 1});
}

void PairRecord::fail(std::span<const OffloadProblem> problems) {
    if (problems.empty())
        return;
    outcome_.status = OutcomeStatus::Failed;
    // There may be very many new ones.
    const auto known = static_cast<std::ptrdiff_t>(problemCount());
    for (const auto& problem : problems) {
        const auto begin = outcome_.problems.begin();
        if (std::find(begin, begin + known, problem) == begin + known)
            note(problem);
    }
}

void PairRecord::failOnce(OffloadProblem::Kind kind, const std::string& place,
                          const std::exception& failure) {
    outcome_.status = OutcomeStatus::Failed;
    AppLog::append("Reports not written: " + describe(failure));
    if (!isTold(kind, place))
        fail(OffloadProblem::of(kind, place, failure));
}

bool PairRecord::isTold(OffloadProblem::Kind kind, std::string_view subject) const {
    return std::any_of(outcome_.problems.begin(), outcome_.problems.end(),
                       [&](const OffloadProblem& problem) {
                           return problem.kind == kind && problem.subject == subject;
                       });
}

SessionManifest PairRecord::manifestOf(std::vector<FileCopyResult> files) const {
    auto manifest = ReportWriter::buildManifest(outcome_, std::move(files), pair_.card.facts,
                                                pair_.destination.facts, pair_.camera, pair_.ekip,
                                                plan_.language);
    // Below a folder that is left out there is no row that could say so.
    const auto names = plan_.settings.skipNames();
    if (names != TreeWalker::defaultSkipNames())
        manifest.skipNames.emplace(names.begin(), names.end());
    // Whoever reads this later was not there.
    const bool hasStoppedByItself =
        std::any_of(outcome_.problems.begin(), outcome_.problems.end(), [](const auto& problem) {
            using Kind = OffloadProblem::Kind;
            return problem.kind == Kind::CopyStopped || problem.kind == Kind::HashingStopped;
        });
    if (manifest.status == OutcomeStatus::Failed && stop_.stop_requested() && !hasStoppedByItself)
        manifest.problems.emplace_back(plan_.l10n().stoppedByUser());
    return manifest;
}

} // namespace slatewise
