#pragma once

#include "Arguments.h"
#include "ProgressDisplay.h"
#include "Texts.h"

#include "Batch/Batch.h"

#include <QEventLoop>

#include <stop_token>
#include <vector>

namespace slatewise::tool {

/// One call of the program: the batch that the command line asks for, shown in a terminal. Where
/// the command line says nothing the user's stored settings count, which are read and never
/// written. Nothing is ejected. Needs an application object, and lives on its thread.
class Offload : private BatchListener {
public:
    /// Refers to all three.
    Offload(const Arguments& arguments, const Texts& texts, ProgressDisplay& display)
        : arguments_(arguments), texts_(texts), display_(display) {}

    /// Runs the event loop until all is over. One result per pair, cards in the outer loop.
    std::vector<PairResult> run(std::stop_token stop);

private:
    void batchBegan(const BatchPlan& plan) override;
    void pairBegan(const BatchPair& pair) override;
    void phaseChanged(const OffloadPhase& phase) override;
    void problemFound(const OffloadProblem& problem) override;
    void pairEnded(const BatchPair& pair, const PairResult& result) override;
    void batchEnded(const BatchResult& result) override;

    const Arguments& arguments_;
    const Texts& texts_;
    ProgressDisplay& display_;
    QEventLoop loop_;
    std::stop_token stop_;
    std::vector<PairResult> results_;
};

} // namespace slatewise::tool
