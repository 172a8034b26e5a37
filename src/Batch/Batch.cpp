#include "Batch/Batch.h"

#include "Batch/CardEject.h"
#include "Batch/PairTraces.h"
#include "Offload/CopyEngine.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Service/OutboxDrainer.h"
#include "Storage/AppLog.h"

#include <QPromise>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace slatewise {

namespace {

/// How often progress is looked at: once for each picture that a screen shows.
constexpr std::chrono::milliseconds kProgressInterval{16};

int countRows(const OffloadOutcome& outcome, VerifyStatus verifyStatus) {
    return static_cast<int>(
        std::count_if(outcome.files.begin(), outcome.files.end(),
                      [&](const auto& row) { return row.verifyStatus == verifyStatus; }));
}

CopyEngine::Request requestFor(const BatchPlan& plan, const BatchPair& pair) {
    return {.card = pair.card,
            .destination = pair.destination,
            .cardFolder = pair.cardFolder,
            .destinationFolder = pair.destinationFolder,
            .settings = plan.settings,
            .camera = pair.camera,
            .ekip = pair.ekip,
            .sessionID = Uuid::random(),
            .now = Clock::now()};
}

void takeOver(const OffloadOutcome& outcome, PairResult& result) {
    result.runStatus = outcome.status;
    result.sessionRoot = outcome.sessionRoot;
    if (outcome.status == OutcomeStatus::Verified) {
        result.filesDone = countRows(outcome, VerifyStatus::Verified);
        result.bytesDone = outcome.bytesCopied;
    } else if (outcome.status == OutcomeStatus::Hashed) {
        result.filesDone = countRows(outcome, VerifyStatus::Hashed);
    }
}

std::shared_ptr<const RootFolder> openIfThere(const std::filesystem::path& path) {
    try {
        return std::make_shared<const RootFolder>(path);
    } catch (const PosixError& failure) {
        AppLog::append(describe(failure));
        return nullptr;
    }
}

QCoro::Task<> drain(AppDatabase database, std::optional<SaaSProfile> profile) {
    const OutboxDrainer drainer(database);
    const auto draining = drainer.drain(std::move(profile));
    co_await draining;
}

/// Nobody may be told "verified" of what lies on a disk that is not the chosen one any more.
void withdrawIfMoved(const BatchPair& pair, OffloadOutcome& outcome, RunMailbox& mail) {
    const auto missing = pair.findMissingFolder();
    if (!missing)
        return;
    outcome.status = OutcomeStatus::Failed;
    auto& known = outcome.problems;
    if (std::find(known.begin(), known.end(), *missing) != known.end())
        return;
    known.push_back(*missing);
    mail.observer().problem(*missing);
}

QCoro::Task<> finishAfter(QCoro::Task<> work, std::shared_ptr<QPromise<void>> over) {
    co_await work;
    over->finish();
}

} // namespace

struct Batch::FirstLook {
    std::optional<std::string> obstacle;
    Folders folders;
};

/// What the steps of one pair hand on to each other. Big things in it come into being and go on
/// workers alone.
struct Batch::PairWork {
    BatchPair pair;
    RunMailbox mail;
    PairResult result;
    std::unique_ptr<OffloadOutcome> outcome;
    PairTraces::Folders folders;
};

Batch::Batch(BatchPlan plan, const BatchSurroundings& surroundings,
             std::shared_ptr<AppDatabase> database, BatchListener& listener)
    : plan_(std::move(plan)), surroundings_(surroundings), database_(std::move(database)),
      listener_(&listener) {}

void Batch::start() {
    QTimer::singleShot(0, [self = shared_from_this()] { run(self); });
}

void Batch::abandon() {
    listener_ = nullptr;
    cancel();
}

QCoro::Task<> Batch::run(std::shared_ptr<Batch> self) {
    BatchResult result;
    result.wasHashing = self->plan_.settings.verifyOnly;
    result.message = co_await self->findObstacle();
    result.wasBegun = !result.message;
    if (result.wasBegun && self->listener_)
        self->listener_->batchBegan(self->plan_);
    for (const auto& pair : self->plan_.pairs()) {
        if (result.message) {
            result.pairs.emplace_back();
            continue;
        }
        const auto ended = co_await self->runPair(pair);
        result.pairs.push_back(ended);
        if (ended.page)
            result.report = ended.page;
        if (ended.runStatus)
            co_await self->reportToService();
        if (ended.status == OutcomeStatus::Failed) {
            result.message = ended.message;
            continue;
        }
        result.filesDone += ended.filesDone;
        result.bytesDone += ended.bytesDone;
        if (pair.isLastOfCard) {
            result.finishedCardIDs.insert(pair.card.id());
            if (auto sentence = co_await self->ejectIfWanted(pair.card))
                result.ejects.push_back(std::move(*sentence));
        }
    }
    if (self->listener_)
        self->listener_->batchEnded(result);
}

/// Why nothing can be begun, in the user's words.
QCoro::Task<std::optional<std::string>> Batch::findObstacle() {
    const auto found = std::make_shared<FirstLook>();
    const auto looking =
        unlessCancelled(onWorker([found, plan = plan_, surroundings = surroundings_] {
            *found = lookAt(plan, surroundings);
        }));
    co_await looking;
    if (stop_.stop_requested())
        co_return std::string(plan_.l10n().cancelled());
    folders_ = std::move(found->folders);
    co_return found->obstacle;
}

/// Takes hold of every card and every disk before anything else is asked of them. One that is not
/// there fails the pairs that need it.
Batch::FirstLook Batch::lookAt(const BatchPlan& plan, const BatchSurroundings& surroundings) {
    FirstLook look;
    try {
        for (const auto* volumes : {&plan.cards, &plan.destinations}) {
            for (const auto& volume : *volumes)
                look.folders[volume.facts.mountPoint] = openIfThere(volume.facts.mountPoint);
        }
        look.obstacle = surroundings.findObstacle(plan);
    } catch (const std::exception& failure) {
        look.obstacle = describe(failure);
    }
    return look;
}

/// Never fails: a failure is a result.
QCoro::Task<PairResult> Batch::runPair(BatchPair pair) {
    if (listener_)
        listener_->pairBegan(pair);
    const auto work = std::make_shared<PairWork>();
    work->pair = std::move(pair);
    work->pair.cardFolder = folders_[work->pair.card.facts.mountPoint];
    work->pair.destinationFolder = folders_[work->pair.destination.facts.mountPoint];
    auto& result = work->result;
    try {
        if (stop_.stop_requested())
            throw CancellationError();
        co_await runEngine(work);
        co_await leaveTraces(work);
    } catch (const CancellationError&) {
        result.message = plan_.l10n().cancelled();
    } catch (const std::exception& failure) {
        result.message = describe(failure);
        AppLog::append("Offload failed card=" + work->pair.card.name() +
                       " dest=" + work->pair.destination.name() + ": " + result.message);
    }
    deliver(work->mail.take());
    result.problems = work->mail.problems();
    if (result.sessionRoot.empty())
        result.sessionRoot = work->mail.sessionRoot();
    const auto& folders = work->folders;
    result.reportFolder = folders.onDestination.empty() ? folders.inArchive : folders.onDestination;
    const auto& shown = folders.inArchive.empty() ? folders.onDestination : folders.inArchive;
    if (!shown.empty())
        result.page = shown / "Reports_Standart.html";
    // Workers may be slower to let go of their work than to end it.
    work->pair.cardFolder.reset();
    work->pair.destinationFolder.reset();
    if (listener_)
        listener_->pairEnded(work->pair, result);
    co_return result;
}

QCoro::Task<> Batch::runEngine(std::shared_ptr<PairWork> work) {
    QTimer postman;
    postman.setTimerType(Qt::PreciseTimer);
    QObject::connect(&postman, &QTimer::timeout, [this, work] { deliver(work->mail.take()); });
    postman.start(kProgressInterval);
    auto running = onWorker([self = shared_from_this(), work] {
        if (const auto missing = work->pair.findMissingFolder())
            throw Error(missing->text(self->plan_.l10n()));
        work->outcome = std::make_unique<OffloadOutcome>(self->surroundings_.runEngine(
            requestFor(self->plan_, work->pair), work->mail.observer(), self->stop_.get_token()));
    });
    co_await running;
    postman.stop();
    deliver(work->mail.take());
}

QCoro::Task<> Batch::leaveTraces(std::shared_ptr<PairWork> work) {
    return onWorker([self = shared_from_this(), work] {
        const auto outcome = std::move(work->outcome);
        withdrawIfMoved(work->pair, *outcome, work->mail);
        auto& result = work->result;
        takeOver(*outcome, result);
        work->folders = PairTraces::leave(self->plan_, work->pair, *outcome, *self->database_,
                                          work->mail.observer().problem);
        result.status = outcome->status;
        if (!endedWell(result.status))
            result.message = self->reasonOf(work->pair, *outcome, *result.runStatus);
    });
}

/// Why a pair failed whose run came to something: the proof, else the trace that is missing.
std::string Batch::reasonOf(const BatchPair& pair, const OffloadOutcome& outcome,
                            OutcomeStatus runStatus) const {
    const auto failure = std::find_if(
        outcome.problems.begin(), outcome.problems.end(), [](const OffloadProblem& problem) {
            return problem.severity() == OffloadProblem::Severity::Failure;
        });
    if (endedWell(runStatus) && failure != outcome.problems.end())
        return failure->text(plan_.l10n());
    return plan_.l10n().verifyIncomplete(Text::displayable(pair.card.name()),
                                         Text::displayable(pair.destination.name()));
}

/// Delivers the pair's report and whatever else waits. A service that is slow holds a batch up for
/// a moment, once; what is not delivered by then goes out while the batch goes on.
QCoro::Task<> Batch::reportToService() {
    const auto before = std::chrono::steady_clock::now();
    co_await unlessCancelled(drain(*database_, plan_.serviceProfile), serviceTimeLeft_);
    const auto waited = std::chrono::steady_clock::now() - before;
    serviceTimeLeft_ -=
        std::min(serviceTimeLeft_, std::chrono::duration_cast<std::chrono::milliseconds>(waited));
}

/// Waits for the end of `work`, no longer than `patience`. Who cancels does not wait for a network
/// or a disk: what is under way goes on by itself.
QCoro::Task<> Batch::unlessCancelled(QCoro::Task<> work,
                                     std::optional<std::chrono::milliseconds> patience) {
    const auto over = std::make_shared<QPromise<void>>();
    over->start();
    if (patience)
        QTimer::singleShot(*patience, [over] { over->finish(); });
    const std::stop_callback cancelled(stop_.get_token(), [over] { over->finish(); });
    finishAfter(std::move(work), over);
    const auto ending = over->future();
    co_await ending;
}

/// A card that cannot be ejected stays mounted, and that is all. Gives what the user is told.
QCoro::Task<std::optional<std::string>> Batch::ejectIfWanted(ClassifiedVolume card) {
    if (!plan_.settings.ejectAfterSuccess || !surroundings_.eject)
        co_return std::nullopt;
    const auto sentence = std::make_shared<std::optional<std::string>>();
    auto ejecting = onWorker([eject = surroundings_.eject, sentence, l10n = plan_.l10n(),
                              folder = std::exchange(folders_[card.facts.mountPoint], nullptr),
                              card = std::move(card)]() mutable {
        // Another card may lie there by now.
        if (!folder || !folder->isStillAtItsPath())
            return;
        // A volume that is held open cannot be unmounted.
        folder.reset();
        *sentence = CardEject::run(eject, card, l10n);
    });
    co_await ejecting;
    co_return *sentence;
}

void Batch::deliver(const RunMailbox::Mail& mail) {
    if (!listener_)
        return;
    for (const auto& problem : mail.problems)
        listener_->problemFound(problem);
    if (mail.phase)
        listener_->phaseChanged(*mail.phase);
}

} // namespace slatewise
