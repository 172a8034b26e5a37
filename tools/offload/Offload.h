#pragma once

#include "Arguments.h"
#include "ProgressDisplay.h"
#include "Texts.h"

#include "Model/AppModel.h"

#include <stop_token>
#include <vector>

namespace slatewise::tool {

/// One call of the program: the application without its window, told by the command line what a
/// user would tap, its batch shown in a terminal. The user's stored settings are read and never
/// written.
class Offload : private BatchListener {
public:
    Offload(const Arguments& arguments, UserDefaults& defaults, const Texts& texts,
            ProgressDisplay& display);

    /// Runs the event loop until all is over. One result per pair, cards in the outer loop.
    std::vector<PairResult> run(std::stop_token stop);

private:
    QCoro::Task<> begin();
    void pairBegan(const BatchPair& pair) override;
    void phaseChanged(const OffloadPhase& phase) override;
    void problemFound(const OffloadProblem& problem) override;
    void pairEnded(const BatchPair& pair, const PairResult& result) override;
    void batchEnded(const BatchResult& result) override;

    const Arguments& arguments_;
    const Texts& texts_;
    ProgressDisplay& display_;
    AppModel model_;
    std::stop_token stop_;
    std::vector<PairResult> results_;
};

} // namespace slatewise::tool
