#pragma once

#include "NamedFolders.h"
#include "ProgressDisplay.h"
#include "Texts.h"

#include "Batch/Batch.h"

#include <QEventLoop>

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise::tool {

/// What one call of the program is to do.
struct Order {
    OffloadSettings settings;
    NamedFolders folders;
    /// Of the cards that have none of their own.
    std::string camera;
    std::string crew;

    const std::string& cameraOf(const NamedFolder& card) const {
        return card.camera.empty() ? camera : card.camera;
    }
    const std::string& crewOf(const NamedFolder& card) const {
        return card.crew.empty() ? crew : card.crew;
    }
};

/// The batch that an order asks for, shown in a terminal. A card or a destination that cannot be
/// used fails its own pairs and holds up no others. Nothing is ejected. Needs an application
/// object, and lives on its thread.
class Offload : private BatchListener {
public:
    /// Refers to all three.
    Offload(const Order& order, const Texts& texts, ProgressDisplay& display);

    /// Runs the event loop until all is over. One result for each card and each destination, cards
    /// in the outer loop. Never fails: a failure is a result.
    std::vector<PairResult> run(std::stop_token stop) noexcept;

private:
    void begin();
    void cancel();
    BatchPlan plan() const;
    void answerForUnusable();
    QCoro::Task<> waitForService();
    QCoro::Task<bool> areReportsWaiting() const;

    void batchBegan(const BatchPlan& plan) override;
    void pairBegan(const BatchPair& pair) override;
    void phaseChanged(const OffloadPhase& phase) override;
    void problemFound(const OffloadProblem& problem) override;
    void pairEnded(const BatchPair& pair, const PairResult& result) override;
    void batchEnded(const BatchResult& result) override;
    void tellOfFailure(const std::string& label, const PairResult& result);
    std::string_view advice(std::optional<OffloadProblem::Kind> kind) const;

    const Order& order_;
    const Texts& texts_;
    ProgressDisplay& display_;
    QEventLoop loop_;
    std::stop_token stop_;
    std::shared_ptr<AppDatabase> store_;
    std::shared_ptr<Batch> batch_;
    std::vector<BatchPair> pairs_;
    std::vector<PairResult> results_;
    /// Which of the results each pair of the batch is.
    std::vector<std::size_t> places_;
    /// Names the pair at work.
    std::string label_;
    /// What its notes were about, and how many were not told.
    std::set<OffloadProblem::Kind> notedKinds_;
    std::size_t notesTold_ = 0;
    std::size_t notesLeft_ = 0;
    /// How many of the batch's pairs have ended.
    std::size_t ended_ = 0;
    /// What the store could not take before is on its way there.
    bool isWritingHistory_ = false;
};

} // namespace slatewise::tool
