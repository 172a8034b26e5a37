#include "Offload.h"

#include "Offload/OffloadError.h"
#include "Offload/PathSize.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Service/OutboxDrainer.h"
#include "Service/ServiceProfileFile.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"
#include "Storage/UserStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace slatewise::tool {

namespace {

/// How long the service may still take when everything else is done.
constexpr std::chrono::seconds kServicePatience{10};
/// More problems of one pair than these, and more notes, are left to the log and the reports.
constexpr std::size_t kProblemsTold = 3;

std::string labelOf(const BatchPair& pair) {
    const auto& [ignored, index, count] = pair.position;
    return count > 1 ? fmt::format("{}/{}  {}", index + 1, count, pair.name) : pair.name;
}

std::string sentence(const std::string& label, std::string_view text) {
    return fmt::format("{} · {}", label, text);
}

/// What is wrong with the copy first: not all may be told.
std::vector<OffloadProblem> failuresIn(const PairResult& result) {
    std::vector<OffloadProblem> failures;
    std::copy_if(result.problems.begin(), result.problems.end(), std::back_inserter(failures),
                 [](const auto& problem) {
                     return problem.severity() == OffloadProblem::Severity::Failure;
                 });
    std::stable_partition(failures.begin(), failures.end(),
                          [](const auto& failure) { return !failure.isOfReports(); });
    return failures;
}

/// Nothing went wrong but with its reports.
bool isCopyComplete(const PairResult& result, const std::vector<OffloadProblem>& failures) {
    return result.runStatus && endedWell(*result.runStatus) && !failures.empty() &&
           std::all_of(failures.begin(), failures.end(),
                       [](const auto& failure) { return failure.isOfReports(); });
}

} // namespace

Offload::Offload(const Order& order, const Texts& texts, ProgressDisplay& display)
    : order_(order), texts_(texts), display_(display),
      results_(order.folders.cards.size() * order.folders.destinations.size()) {}

std::vector<PairResult> Offload::run(std::stop_token stop) noexcept {
    stop_ = std::move(stop);
    const std::stop_callback cancelled(stop_, [this] {
        QMetaObject::invokeMethod(
            &loop_, [this] { cancel(); }, Qt::QueuedConnection);
    });
    try {
        // Then nobody knows yet what can be used and what not.
        if (stop_.stop_requested()) {
            display_.note(texts_.shared.cancelled());
            return results_;
        }
        answerForUnusable();
        if (!places_.empty()) {
            begin();
            loop_.exec();
        }
    } catch (const std::exception& failure) {
        display_.note(texts_.shared.failed(describe(failure, texts_.shared)));
    }
    return results_;
}

/// Tells of the pairs that a missing card or disk makes impossible, and keeps the places of the
/// others.
void Offload::answerForUnusable() {
    std::size_t place = 0;
    for (const auto& card : order_.folders.cards) {
        for (const auto& destination : order_.folders.destinations) {
            const auto& obstacle = card.obstacle ? card.obstacle : destination.obstacle;
            if (obstacle) {
                const auto label = pairName(card.volume, destination.volume, order_.settings);
                results_[place].message = *obstacle;
                display_.note(sentence(label, texts_.shared.failed(*obstacle)));
                const bool isGone = card.obstacle ? card.isGone : destination.isGone;
                display_.note(sentence(
                    label,
                    advice(isGone ? std::optional(OffloadProblem::Kind::CardGone) : std::nullopt)));
            } else {
                places_.push_back(place);
            }
            ++place;
        }
    }
}

BatchPlan Offload::plan() const {
    BatchPlan plan;
    plan.settings = order_.settings;
    plan.language = texts_.shared.language();
    for (const auto& card : order_.folders.cards) {
        if (card.obstacle)
            continue;
        plan.cards.push_back(card.volume);
        plan.cameraByCardID[card.volume.id()] = Text::pathSafeLabel(order_.cameraOf(card));
        plan.ekipByCardID[card.volume.id()] = order_.crewOf(card);
    }
    for (const auto& destination : order_.folders.destinations) {
        if (!destination.obstacle)
            plan.destinations.push_back(destination.volume);
    }
    const ServiceProfileFile profile(SupportPaths::applicationSupport());
    plan.serviceProfile = profile.current();
    if (const auto& refusal = profile.refusal())
        display_.note(refusal->text(texts_.shared));
    return plan;
}

void Offload::begin() {
    AppLog::prune(SupportPaths::logsDirectory(), Clock::now());
    const auto whole = plan();
    pairs_ = whole.pairs();
    BatchListener& listener = *this;
    store_ = openUserStore();
    batch_ = std::make_shared<Batch>(whole, BatchSurroundings(), store_, listener);
    batch_->start();
    if (stop_.stop_requested())
        cancel();
}

void Offload::cancel() {
    if (batch_)
        batch_->cancel();
    else if (!isWritingHistory_)
        loop_.quit();
}

void Offload::batchBegan(const BatchPlan& plan) {
    AppLog::append(plan.logLine());
}

void Offload::pairBegan(const BatchPair& pair) {
    label_ = labelOf(pair);
    display_.setLabel(label_);
    notedKinds_.clear();
    notesTold_ = notesLeft_ = 0;
}

void Offload::phaseChanged(const OffloadPhase& phase) {
    display_.show(phase);
}

void Offload::problemFound(const OffloadProblem& problem) {
    // What the offload failed by is told with its end.
    if (problem.severity() != OffloadProblem::Severity::Note)
        return;
    // A card full of links must not hide that its proof may come from memory.
    const bool isNew = notedKinds_.insert(problem.kind).second;
    if (!isNew && notesTold_ >= kProblemsTold) {
        ++notesLeft_;
        return;
    }
    ++notesTold_;
    display_.note(sentence(label_, problem.text(texts_.shared)));
}

void Offload::pairEnded(const BatchPair& pair, const PairResult& result) {
    const auto label = labelOf(pair);
    results_[places_[ended_]] = result;
    ++ended_;
    if (notesLeft_ > 0)
        display_.note(sentence(label, texts_.moreNotes(notesLeft_)));
    const auto& shared = texts_.shared;
    if (result.status == OutcomeStatus::Verified) {
        const auto size = PathSize::format(result.bytesDone, shared.language());
        display_.inform(sentence(label, shared.verified(result.filesDone, size)));
        return;
    }
    if (result.status == OutcomeStatus::Hashed) {
        display_.inform(sentence(label, shared.hashed(result.filesDone)));
        return;
    }
    tellOfFailure(label, result);
}

void Offload::tellOfFailure(const std::string& label, const PairResult& result) {
    const auto& shared = texts_.shared;
    const auto failures = failuresIn(result);
    for (std::size_t index = 0; index < std::min(failures.size(), kProblemsTold); ++index)
        display_.note(sentence(label, shared.failed(failures[index].text(shared))));
    if (failures.size() > kProblemsTold)
        display_.note(sentence(label, texts_.moreProblems(failures.size() - kProblemsTold)));
    const bool isComplete = isCopyComplete(result, failures);
    if (stop_.stop_requested() && !isComplete) {
        display_.note(sentence(label, shared.cancelled()));
    } else {
        // A run that came to nothing may have told no problem.
        const bool isTold = std::any_of(failures.begin(), failures.end(), [&](const auto& failure) {
            return result.runStatus || failure.text(shared) == result.message;
        });
        if (!isTold)
            display_.note(sentence(label, shared.failed(result.message)));
        const auto* decisive = OffloadProblem::decisive(result.problems);
        const auto kind = decisive ? std::optional(decisive->kind) : std::nullopt;
        display_.note(sentence(label, advice(kind)));
    }
    if (!result.sessionRoot.empty() && !isComplete && !order_.settings.verifyOnly) {
        display_.note(
            sentence(label, texts_.leftOnDestination(Text::displayable(result.sessionRoot.native()),
                                                     result.filesDone)));
    }
}

std::string_view Offload::advice(std::optional<OffloadProblem::Kind> kind) const {
    return order_.settings.verifyOnly ? texts_.hashingAdvice(kind) : texts_.advice(kind);
}

void Offload::batchEnded(const BatchResult& result) {
    if (!result.wasBegun && result.message)
        display_.note(texts_.shared.failed(*result.message));
    for (; ended_ < pairs_.size(); ++ended_)
        display_.note(sentence(labelOf(pairs_[ended_]), texts_.notBegun()));
    batch_.reset();
    waitForService();
}

/// Who interrupts does not wait for a network: that ends the loop.
QCoro::Task<> Offload::waitForService() {
    // Nor for longer than a moment for a store that another program holds; but what is lost to that
    // is told in any case.
    isWritingHistory_ = true;
    const auto writing =
        onWorker([store = store_, l10n = texts_.shared] { return store->writeWhatIsKept(l10n); });
    const auto failure = co_await writing;
    isWritingHistory_ = false;
    if (failure)
        display_.note(texts_.shared.historyLost(*failure));
    if (!stop_.stop_requested()) {
        const auto waiting = OutboxDrainer::waitForAll(kServicePatience);
        const bool isAllTried = co_await waiting;
        const auto asking = areReportsWaiting();
        if (!isAllTried || co_await asking)
            display_.note(texts_.reportsStillWait());
    }
    loop_.quit();
}

/// The service may have refused them, and another program may have kept the outbox to itself.
QCoro::Task<bool> Offload::areReportsWaiting() const {
    const auto profile = ServiceProfileFile(SupportPaths::applicationSupport()).current();
    if (!profile || !profile->canBeReached())
        co_return false;
    try {
        const auto listing = onWorker([store = *store_] { return store.pendingOutboxIDs(); });
        const auto pending = co_await listing;
        co_return !pending.empty();
    } catch (const std::exception&) {
        // A store that does not answer has told of itself.
        co_return false;
    }
}

} // namespace slatewise::tool
