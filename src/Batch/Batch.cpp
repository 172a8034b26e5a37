#include "Batch/Batch.h"

#include "Batch/BatchOpening.h"
#include "Batch/CardEject.h"
#include "Batch/PairTraces.h"
#include "Batch/PairWork.h"
#include "Batch/Waiting.h"
#include "Language/L10n.h"
#include "Offload/CopyEngine.h"
#include "Offload/ReportNames.h"
#include "Platform/Error.h"
#include "Platform/Worker.h"
#include "Service/OutboxDrainer.h"
#include "Storage/AppLog.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace slatewise {

namespace {

/// How often progress is looked at: once for each picture that a screen shows.
constexpr std::chrono::milliseconds kProgressInterval{16};

/// How long a step may take to end once a stop is asked for.
constexpr std::chrono::seconds kGrace{5};

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

QCoro::Task<> drain(AppDatabase database, std::optional<SaaSProfile> profile) {
    const OutboxDrainer drainer(database);
    const auto draining = drainer.drain(std::move(profile));
    co_await draining;
}

/// What fails a pair before its run has rows is told as a problem, too: what to do depends on it.
void requireBoth(const std::optional<OffloadProblem>& missing, RunMailbox& mail, L10n l10n) {
    if (!missing)
        return;
    mail.observer().problem(*missing);
    throw Error(missing->text(l10n));
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

} // namespace

Batch::Batch(BatchPlan plan, BatchSurroundings surroundings, std::shared_ptr<AppDatabase> database,
             BatchListener& listener)
    : plan_(std::move(plan)), surroundings_(std::move(surroundings)),
      database_(std::move(database)), listener_(&listener) {}

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
            result.pairs.push_back(self->notBegun(pair));
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
        if (pair.isLastOfCard) {
            result.filesDone += ended.filesDone;
            result.bytesDone += ended.bytesDone;
            result.finishedCardIDs.insert(pair.card.id());
            if (auto end = co_await self->ejectIfWanted(pair.card))
                result.ejects.push_back(std::move(*end));
        }
    }
    if (self->listener_)
        self->listener_->batchEnded(result);
}

PairResult Batch::notBegun(const BatchPair& pair) const {
    PairResult result;
    result.message = plan_.l10n().pairNotBegun(pair.name);
    return result;
}

/// Takes hold of every card and every disk, and looks for what stands against the batch. Gives why
/// nothing can be begun, in the user's words. What is not there fails the pairs that need it.
QCoro::Task<std::optional<std::string>> Batch::findObstacle() {
    const auto holding = HeldFolders::of(plan_, stop_.get_token(), surroundings_.patience);
    folders_ = co_await holding;
    const auto opening = std::make_shared<BatchOpening>();
    auto looking =
        onWorker([opening, plan = folders_.heldPart(plan_), disks = folders_.disksOf(plan_),
                  find = surroundings_.findObstacle]() noexcept {
            *opening = BatchOpening::of(plan, disks, find);
        });
    // Folders of many reports are looked through.
    constexpr int kTimesAsLong = 6;
    const auto ending = waitForEnd(std::move(looking), stop_.get_token(),
                                   {.patience = kTimesAsLong * surroundings_.patience});
    const bool hasEnded = co_await ending;
    if (stop_.stop_requested()) {
        AppLog::append("Offload not begun: stopped");
        co_return std::string(plan_.l10n().cancelled());
    }
    if (!hasEnded) {
        AppLog::append("Offload not begun: the archive or a disk does not answer");
        co_return std::string(plan_.l10n().nothingAnswers());
    }
    archive_ = std::move(opening->archive);
    co_return opening->obstacle;
}

/// Never fails: a failure is a result.
QCoro::Task<PairResult> Batch::runPair(BatchPair pair) {
    if (listener_)
        listener_->pairBegan(pair);
    const auto work = std::make_shared<PairWork>(plan_.settings);
    work->pair = std::move(pair);
    work->pair.cardFolder = folders_.at(work->pair.card.facts.mountPoint);
    work->pair.destinationFolder = folders_.at(work->pair.destination.facts.mountPoint);
    work->pair.archiveFolder = archive_;
    PairResult result;
    bool hasTraces = false;
    try {
        if (stop_.stop_requested())
            throw CancellationError();
        requireBoth(folders_.findMissing(work->pair), work->mail, plan_.l10n());
        if (!plan_.settings.verifyOnly)
            work->note = folders_.findNotMounted(work->pair);
        if (work->note)
            work->mail.observer().problem(*work->note);
        co_await runEngine(work);
        // As long as the traces are not left, that is all there is.
        result = work->result;
        co_await leaveTraces(work);
        result = std::move(work->result);
        hasTraces = true;
        // Workers may be slower to let go of their work than to end it.
        work->pair.cardFolder.reset();
        work->pair.destinationFolder.reset();
        work->pair.archiveFolder.reset();
    } catch (const CancellationError&) {
        const auto l10n = plan_.l10n();
        result.message =
            work->isCopyComplete(result.runStatus) ? l10n.reportsNotAwaited() : l10n.cancelled();
        result.failure = PairFailure::Stopped;
    } catch (const std::exception& failure) {
        result.message = describe(failure, plan_.l10n());
        result.failure = PairFailure::Other;
        if (const auto* known = dynamic_cast<const OffloadError*>(&failure))
            result.error = *known;
    }
    if (!hasTraces)
        AppLog::append("Offload failed card=" + work->pair.card.name() +
                       " dest=" + work->pair.destination.name() + ": " + result.message);
    deliver(work->mail.take());
    result.problems = work->mail.problems();
    if (result.sessionRoot.empty())
        result.sessionRoot = work->mail.sessionRoot();
    if (listener_)
        listener_->pairEnded(work->pair, result);
    co_return result;
}

QCoro::Task<> Batch::runEngine(std::shared_ptr<PairWork> work) {
    QTimer postman;
    postman.setTimerType(Qt::PreciseTimer);
    QObject::connect(&postman, &QTimer::timeout, [this, work] { deliver(work->mail.take()); });
    postman.start(kProgressInterval);
    auto running = perform(work, kGrace, [self = shared_from_this(), work, pair = work->pair] {
        const auto requireFolders = [&] {
            requireBoth(pair.findMissingFolder(), work->mail, self->plan_.l10n());
        };
        requireFolders();
        auto request = requestFor(self->plan_, pair);
        work->lists.follow(request);
        auto observer = work->mail.observer();
        observer.proved = [&](auto copies) {
            work->copies = std::move(copies);
        };
        try {
            work->outcome = std::make_unique<OffloadOutcome>(
                self->surroundings_.runEngine(request, observer, self->stop_.get_token()));
        } catch (const CancellationError&) {
            throw;
        } catch (const Error&) {
            // What a dead disk answers says less than that it is dead.
            requireFolders();
            throw;
        }
        if (work->note)
            work->outcome->problems.insert(work->outcome->problems.begin(), *work->note);
        work->result.take(*work->outcome);
    });
    const bool hasEnded = co_await running;
    postman.stop();
    deliver(work->mail.take());
    if (!hasEnded)
        giveUp(*work, OffloadProblem::Kind::NoAnswer);
}

QCoro::Task<> Batch::leaveTraces(std::shared_ptr<PairWork> work) {
    // Reports of a million files are not written in a moment.
    constexpr std::size_t kRowsPerSecond = 10'000;
    const auto grace = kGrace + std::chrono::seconds(work->outcome->files.size() / kRowsPerSecond);
    const auto runStatus = work->outcome->status;
    auto leaving = perform(work, grace, [self = shared_from_this(), work, pair = work->pair] {
        const auto outcome = std::move(work->outcome);
        const auto copies = std::move(work->copies);
        withdrawIfMoved(pair, *outcome, work->mail);
        work->lists.settle(pair, *outcome, work->mail.observer().problem);
        if (copies)
            copies->noteLists(outcome->hashLists);
        const PairTraces::Waiter waiter = {[work](auto step) { return work->reach(step); },
                                           [&](const auto& folders) {
                                               self->settle(*work, pair, *outcome, folders);
                                           }};
        PairTraces::leave(self->plan_, pair, *outcome, copies.get(), *self->database_,
                          work->mail.observer().problem, self->stop_.get_token(), waiter);
    });
    if (co_await leaving)
        co_return;
    if (!work->isSettled)
        giveUp(*work, work->isCopyComplete(runStatus) ? OffloadProblem::Kind::ReportsNotAwaited
                                                      : OffloadProblem::Kind::NoAnswer);
    // Only who holds the history up was not waited for.
    work->mail.observer().problem(
        {OffloadProblem::Kind::SessionNotStored, work->pair.card.name(),
         BothLanguages::of([](L10n l10n) { return std::string(l10n.notAwaited()); })});
}

/// On the worker: how the pair has ended, from what became of its sets.
void Batch::settle(PairWork& work, const BatchPair& pair, const OffloadOutcome& outcome,
                   const PairTraces::Folders& folders) const {
    auto& result = work.result;
    result.status = outcome.status;
    if (result.runStatus != OutcomeStatus::Hashed)
        result.filesDone = folders.filesProved;
    if (!endedWell(result.status)) {
        result.message = reasonOf(pair, outcome, *result.runStatus);
        result.failure = stop_.stop_requested() ? PairFailure::Stopped : PairFailure::Other;
    }
    result.reportFolder = folders.onDestination.empty() ? folders.inArchive : folders.onDestination;
    if (!folders.shown.empty())
        result.page = folders.shown / ReportNames::standardPage;
    work.isSettled = true;
}

/// Does a step of a pair on a worker. Who stops waits a moment for it to end well; a card or a disk
/// that does not answer holds it for ever. Gives whether it has ended.
QCoro::Task<bool> Batch::perform(std::shared_ptr<PairWork> work, std::chrono::seconds grace,
                                 std::function<void()> step) {
    auto performing = onWorker([work, step = std::move(step)]() noexcept {
        try {
            step();
        } catch (...) {
            work->failure = std::current_exception();
        }
    });
    const auto ending =
        waitForEnd(std::move(performing), stop_.get_token(), {.patience = {}, .grace = grace});
    const bool hasEnded = co_await ending;
    if (hasEnded && work->failure)
        std::rethrow_exception(work->failure);
    co_return hasEnded;
}

/// What still goes on without us may yet end; nobody waits for it any longer.
void Batch::giveUp(PairWork& work, OffloadProblem::Kind why) {
    const auto stand = work.stand.exchange(PairWork::Stand::GivenUp);
    const auto tell = work.mail.observer().problem;
    tell({why, work.pair.name});
    // A set may stand by now that says otherwise, and the program may end before it is corrected.
    if (stand != PairWork::Stand::AtWork) {
        const auto disk = work.pair.destination.facts.mountPoint;
        const auto archive = work.pair.archiveFolder->path().lexically_normal();
        const auto reports = (disk / ReportNames::folder).lexically_normal();
        tell({OffloadProblem::Kind::ReportsOutdated, archive.native()});
        if (archive != disk && archive != reports)
            tell({OffloadProblem::Kind::ReportsOutdated, reports.native()});
    }
    throw CancellationError();
}

/// Why a pair failed whose run came to something: the proof, else what the card's own lists say of
/// it, or the trace that is missing.
std::string Batch::reasonOf(const BatchPair& pair, const OffloadOutcome& outcome,
                            OutcomeStatus runStatus) const {
    const auto* failure = OffloadProblem::decisive(outcome.problems);
    if (endedWell(runStatus) && failure)
        return failure->text(plan_.l10n());
    auto reason = plan_.settings.verifyOnly ? plan_.l10n().hashingIncomplete(pair.name)
                                            : plan_.l10n().verifyIncomplete(pair.name);
    const bool isCardGone =
        std::any_of(outcome.problems.begin(), outcome.problems.end(), [](const auto& problem) {
            return problem.kind == OffloadProblem::Kind::CardGone;
        });
    if (!isCardGone)
        reason += " " + std::string(plan_.l10n().cardLeftMounted());
    return reason;
}

/// Delivers the pair's report and whatever else waits. A service that is slow holds a batch up for
/// a moment, once; what is not delivered by then goes out while the batch goes on.
QCoro::Task<> Batch::reportToService() {
    const auto before = std::chrono::steady_clock::now();
    const auto sending = waitForEnd(drain(*database_, plan_.serviceProfile), stop_.get_token(),
                                    {.patience = serviceTimeLeft_});
    co_await sending;
    const auto waited = std::chrono::steady_clock::now() - before;
    serviceTimeLeft_ -=
        std::min(serviceTimeLeft_, std::chrono::duration_cast<std::chrono::milliseconds>(waited));
}

/// A card that cannot be ejected stays mounted, and that is all. Gives what the user is told.
QCoro::Task<std::optional<CardEnd>> Batch::ejectIfWanted(ClassifiedVolume card) {
    // A card that was only hashed is still to be copied.
    if (!plan_.settings.ejectAfterSuccess || plan_.settings.verifyOnly || !surroundings_.eject)
        co_return std::nullopt;
    const auto l10n = plan_.l10n();
    if (stop_.stop_requested())
        co_return CardEject::refuse(card, &L10n::cancelled, l10n);
    const auto end = std::make_shared<CardEnd>();
    auto ejecting = onWorker([eject = surroundings_.eject, end, l10n, card,
                              held = CardEject::Held{folders_.release(card.facts.mountPoint),
                                                     folders_.disksOf(plan_)}]() mutable {
        *end = CardEject::run(eject, card, std::move(held), l10n);
    });
    const auto ending = waitForEnd(std::move(ejecting), stop_.get_token());
    const bool hasEnded = co_await ending;
    co_return hasEnded ? *end : CardEject::leaveInDoubt(card, l10n);
}

void Batch::deliver(const RunMailbox::Mail& mail) {
    if (!listener_)
        return;
    if (!mail.sessionRoot.empty())
        listener_->footageBegan(mail.sessionRoot);
    for (const auto& problem : mail.problems)
        listener_->problemFound(problem);
    if (mail.phase)
        listener_->phaseChanged(*mail.phase);
}

} // namespace slatewise
