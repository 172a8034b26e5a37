#pragma once

#include "Batch/Batch.h"
#include "Batch/PairLists.h"
#include "Batch/PairTraces.h"
#include "Batch/RunMailbox.h"
#include "Offload/ProvedCopies.h"

#include <atomic>
#include <exception>
#include <memory>
#include <optional>

namespace slatewise {

/// What the steps of one pair hand on to each other. Big things in it come into being and go on
/// workers alone.
struct Batch::PairWork {
    explicit PairWork(const OffloadSettings& settings) : lists(settings) {}

    BatchPair pair;
    PairLists lists;
    RunMailbox mail;
    /// What is to be told of the pair however it ends.
    std::optional<OffloadProblem> note;
    std::unique_ptr<OffloadOutcome> outcome;
    std::shared_ptr<ProvedCopies> copies;
    PairResult result;
    /// Of the step at work.
    std::exception_ptr failure;

    enum class Stand {
        AtWork,
        /// Sets of reports are put in place.
        Placing,
        Ended,
        /// Nobody waits for it any longer, and it is told as failed.
        GivenUp,
    };
    std::atomic<Stand> stand = Stand::AtWork;
    /// The result is what the sets say, and nobody writes to it any more.
    std::atomic<bool> isSettled = false;

    /// False once it is given up.
    bool reach(PairTraces::Step step) {
        using Step = PairTraces::Step;
        if (step == Step::Placed)
            return stand != Stand::GivenUp;
        auto before = step == Step::Placing ? Stand::AtWork : Stand::Placing;
        return stand.compare_exchange_strong(before,
                                             step == Step::Placing ? Stand::Placing : Stand::Ended);
    }

    /// As far as anybody knows by now.
    bool isCopyComplete(std::optional<OutcomeStatus> runStatus) const {
        const auto problems = mail.problems();
        const auto* known = OffloadProblem::decisive(problems);
        return runStatus && endedWell(*runStatus) && (!known || known->isOfReports());
    }
};

} // namespace slatewise
