#pragma once

#include "Batch/BatchPlan.h"
#include "Batch/BatchSurroundings.h"
#include "Batch/HeldFolders.h"
#include "Batch/RunMailbox.h"
#include "Offload/OffloadError.h"
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

/// Why a pair failed, where it was neither the card nor a file.
enum class PairFailure {
    None,
    /// By the user.
    Stopped,
    Other,
};

/// What became of one pair.
struct PairResult {
    /// Failed whenever anything after the run failed too.
    OutcomeStatus status = OutcomeStatus::Failed;
    /// What the run itself came to: failed, too, where a stop left copies unproved that somebody
    /// has touched since. Empty when it was never begun or came to nothing.
    std::optional<OutcomeStatus> runStatus;
    /// Where the footage lies; empty when nothing was made there.
    std::filesystem::path sessionRoot;
    /// The report set on the destination, else the one in the archive, else empty.
    std::filesystem::path reportFolder;
    /// The page that shows the pair; empty when none could be written.
    std::optional<std::filesystem::path> page;
    /// Files that were proved or hashed.
    int filesDone = 0;
    std::int64_t bytesDone = 0;
    /// What the user is told about a failure.
    std::string message;
    /// The failure itself, where it has words in both languages.
    std::optional<OffloadError> error{};
    /// What kind of failure it is, as far as no problem tells.
    PairFailure failure = PairFailure::None;
    /// What there is to know beyond the message, a failure or not.
    std::vector<OffloadProblem> problems;
};

/// How a batch ended.
struct BatchResult {
    /// Why it ended before its time; empty when all went well.
    std::optional<std::string> message;
    /// False when it had to be refused, or was cancelled before anything was done.
    bool wasBegun = false;
    /// Nothing was to be copied.
    bool wasHashing = false;
    /// Cards that every destination has.
    VolumeIDs finishedCardIDs;
    /// Each once, on however many disks it now is.
    int filesDone = 0;
    std::int64_t bytesDone = 0;
    /// One sentence for each card that was to be ejected: that it may be pulled, or why not.
    std::vector<std::string> ejects;
    /// The page of the last pair that has one, to be shown.
    std::optional<std::filesystem::path> report;
    /// In the order of the plan's pairs; those that were never begun are "failed".
    std::vector<PairResult> pairs;
};

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
    Batch(BatchPlan plan, const BatchSurroundings& surroundings,
          std::shared_ptr<AppDatabase> database, BatchListener& listener);

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
    [[noreturn]] static void giveUp(PairWork& work, OffloadProblem::Kind why);
    PairResult notBegun(const BatchPair& pair) const;
    std::string reasonOf(const BatchPair& pair, const OffloadOutcome& outcome,
                         OutcomeStatus runStatus) const;
    QCoro::Task<> reportToService();
    QCoro::Task<std::optional<std::string>> ejectIfWanted(ClassifiedVolume card);
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
