#pragma once

#include "Batch/BatchPlan.h"
#include "Batch/BatchResult.h"
#include "Batch/BatchSurroundings.h"
#include "Batch/HeldFolders.h"
#include "Batch/RunMailbox.h"
#include "Offload/OffloadPhase.h"
#include "Offload/OffloadRows.h"

#include <QCoro/QCoroTask>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise {

class AppDatabase;
namespace PairTraces {
struct Folders;
}

/// Told of a batch on the GUI thread.
class BatchListener {
public:
    virtual ~BatchListener() = default;

    /// Nothing stands against it; the first pair is next. Not told of a batch that has to be
    /// refused.
    virtual void batchBegan(const BatchPlan&) {}
    virtual void pairBegan(const BatchPair& pair) = 0;
    /// The folder of the pair at work is made, in which its copies come to lie.
    virtual void footageBegan(const std::filesystem::path&) {}
    virtual void phaseChanged(const OffloadPhase& phase) = 0;
    /// As soon as it comes up; the pair's result has it too.
    virtual void problemFound(const OffloadProblem& problem) = 0;
    virtual void pairEnded(const BatchPair& pair, const PairResult& result) = 0;
    virtual void batchEnded(const BatchResult& result) = 0;
};

/// One press of the button: every card to every destination, one pair after the other, and each
/// pair's traces. Lives on the GUI thread, which it never holds up: whatever takes time happens on
/// a worker that the batch awaits.
class Batch : public std::enable_shared_from_this<Batch> {
public:
    Batch(BatchPlan plan, BatchSurroundings surroundings, std::shared_ptr<AppDatabase> database,
          BatchListener& listener);

    /// Begins once the event loop is back: the listener hears of nothing, and of no end, within
    /// this call. The batch keeps itself alive to its end.
    void start();

    /// Asks the run to end between two chunks, and the batch between two pairs.
    void cancel() { stop_.request_stop(); }

    /// Cancels and tells the listener nothing more, which may go. Traces of the pair at work are
    /// still left.
    void abandon();

private:
    struct PairWork;

    static QCoro::Task<> run(std::shared_ptr<Batch> self);
    QCoro::Task<std::optional<std::string>> findObstacle();
    QCoro::Task<PairResult> runPair(BatchPair pair);
    QCoro::Task<> runEngine(std::shared_ptr<PairWork> work);
    QCoro::Task<> leaveTraces(std::shared_ptr<PairWork> work);
    QCoro::Task<bool> perform(std::shared_ptr<PairWork> work, std::chrono::seconds grace,
                              std::function<void()> step);
    void settle(PairWork& work, const BatchPair& pair, const OffloadOutcome& outcome,
                const PairTraces::Folders& folders) const;
    [[noreturn]] static void giveUp(PairWork& work, OffloadProblem::Kind why);
    PairResult notBegun(const BatchPair& pair) const;
    std::string reasonOf(const BatchPair& pair, const OffloadOutcome& outcome,
                         OutcomeStatus runStatus) const;
    QCoro::Task<> reportToService();
    QCoro::Task<std::optional<CardEnd>> ejectIfWanted(ClassifiedVolume card);
    void deliver(const RunMailbox::Mail& mail);

    const BatchPlan plan_;
    const BatchSurroundings surroundings_;
    const std::shared_ptr<AppDatabase> database_;
    BatchListener* listener_;
    HeldFolders folders_;
    std::shared_ptr<const RootFolder> archive_;
    std::stop_source stop_;
    /// What all pairs together may still wait for the service.
    std::chrono::milliseconds serviceTimeLeft_{5000};
};

} // namespace slatewise
