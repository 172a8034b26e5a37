#pragma once

#include "Batch/BatchPlan.h"
#include "Offload/OffloadRows.h"
#include "Reports/SessionManifest.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

namespace slatewise {

/// What is told of a finished pair: its outcome, and the manifest that says the same in every
/// trace. One thread at a time.
class PairRecord {
public:
    /// Is told what a person must know, as soon as it is known.
    using Tell = std::function<void(const OffloadProblem&)>;

    /// Takes the rows of the outcome. All of these must outlive it.
    PairRecord(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
               const Tell& tell, const std::stop_token& stop);

    const BatchPlan& plan() const { return plan_; }
    const BatchPair& pair() const { return pair_; }
    const OffloadOutcome& outcome() const { return outcome_; }
    const SessionManifest& manifest() const { return manifest_; }
    /// In the run's order. What changes in them shows once the manifest is renewed.
    std::span<FileCopyResult> rows() { return manifest_.files; }

    /// Files that are still what was proved.
    int filesProved() const;

    /// Has the manifest say all that has become known since it was made.
    void renew();

    /// Tells of something that the offload does not fail by.
    void note(const OffloadProblem& problem);
    /// Tells, once, of something that it fails by.
    void fail(const OffloadProblem& problem);
    /// The same of many, no two of which are the same.
    void fail(std::span<const OffloadProblem> problems);
    /// The same for reports that could not be left in a place. One that failed before is told
    /// already.
    void failOnce(OffloadProblem::Kind kind, const std::string& place,
                  const std::exception& failure);
    bool isTold(OffloadProblem::Kind kind, std::string_view subject) const;

    /// Grows with all that is told.
    std::size_t problemCount() const { return outcome_.problems.size(); }

private:
    SessionManifest manifestOf(std::vector<FileCopyResult> files) const;

    const BatchPlan& plan_;
    const BatchPair& pair_;
    OffloadOutcome& outcome_;
    const Tell& tell_;
    const std::stop_token& stop_;
    SessionManifest manifest_;
};

} // namespace slatewise
