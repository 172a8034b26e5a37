#include "Model/Copying/CopyCheck.h"

#include "Batch/BatchPlan.h"
#include "Batch/RunMailbox.h"
#include "Batch/Waiting.h"
#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Platform/Error.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <stop_token>
#include <utility>

namespace slatewise {

namespace {

constexpr std::chrono::milliseconds kProgressInterval{16};
/// What reads looks for a stop between two chunks.
constexpr std::chrono::seconds kGrace{2};

} // namespace

/// Shared with the worker.
struct CopyCheck::Work {
    Work(HistoryRecord wanted, const ModelState& state)
        : session(std::move(wanted)), l10n(state.l10n()), database(state.database) {
        outcome.disk = session.session.destName;
    }

    const HistoryRecord session;
    const L10n l10n;
    const std::shared_ptr<AppDatabase> database;
    std::stop_source stop;
    RunMailbox mail;
    /// For the worker alone, until it is done.
    CheckOutcome outcome;

    void perform();
    void check();
    void store();
};

void CopyCheck::Work::perform() {
    outcome.record.emplace();
    try {
        check();
    } catch (const CancellationError&) {
        outcome.record.reset();
    } catch (const std::exception& failure) {
        outcome.failure = std::current_exception();
        outcome.record->failure = reasonOfNothing(outcome.failure, l10n);
    }
    // Who stopped it has been told so, and may not be waiting any more.
    if (!outcome.record || stop.stop_requested())
        return outcome.record.reset();
    outcome.record->checkedAt = Clock::now();
    store();
}

void CopyCheck::Work::check() {
    const auto& known = session.session;
    const auto tree =
        Verify::findListsOf({known.id, session.reportFolder, known.sessionRoot}, stop.get_token());
    outcome.notes = tree.notes;
    const Verify::Watch watch = {.progress = mail.observer().progress,
                                 .finding = [this](const Verify::Finding& finding) {
                                     outcome.add(finding);
                                 }};
    outcome.result = Verify::check(tree, Verify::Keep::Nothing, watch, stop.get_token());
    const auto& result = outcome.result;
    outcome.record->filesEqual = result.filesEqual;
    outcome.record->differences = result.differences;
    outcome.record->mayBeFromMemory = result.mayBeFromMemory || result.filesKeptInMemory > 0;
}

void CopyCheck::Work::store() {
    try {
        database->recordCheck(session.session.id, *outcome.record);
    } catch (const std::exception& failure) {
        outcome.notStored = std::current_exception();
        AppLog::append("Check not stored: " + describe(failure));
    }
}

CopyCheck::CopyCheck(ModelState& state) : state_(state), language_(state.language) {
    connect(&state, &ModelState::changed, this, [this] {
        if (std::exchange(language_, state_.language) != state_.language)
            Q_EMIT changed();
    });
}

CopyCheck::~CopyCheck() {
    cancel();
}

BatchControl::Standing CopyCheck::standing() const {
    if (isBusy())
        return BatchControl::Busy;
    if (!outcome_ || !outcome_->record)
        return BatchControl::Resting;
    return outcome_->record->isGood() ? BatchControl::Succeeded : BatchControl::Failed;
}

double CopyCheck::fraction() const {
    const auto* const verifying = std::get_if<Phase::Verifying>(&phase_);
    return isBusy() && verifying ? verifying->fraction : 0;
}

QString CopyCheck::percentText() const {
    // It is shown only while the check goes on, and is no end of it.
    return toQString(ProgressTexts::percent(std::min(fraction(), 0.99)));
}

QString CopyCheck::title() const {
    const auto l10n = state_.l10n();
    // There is no card that could be looked through.
    if (isBusy() && std::holds_alternative<Phase::Scanning>(phase_))
        return toQString(names_ + " — " + std::string(l10n.readingLists()));
    if (isBusy())
        return toQString(names_ + " — " + ProgressTexts::title(phase_, {}, l10n));
    return outcome_ ? toQString(names_ + " — " + outcome_->verdict(state_.language)) : QString();
}

QString CopyCheck::findings() const {
    return outcome_ ? toQString(outcome_->lines(state_.l10n())) : QString();
}

bool CopyCheck::isDoubtful() const {
    return standing() == BatchControl::Succeeded && outcome_->record->mayBeFromMemory;
}

void CopyCheck::cancel() {
    if (work_)
        work_->stop.request_stop();
}

void CopyCheck::clear() {
    if (isBusy() || !outcome_)
        return;
    outcome_.reset();
    Q_EMIT changed();
}

void CopyCheck::start(const HistoryRecord& session) {
    if (work_)
        return;
    work_ = std::make_shared<Work>(session, state_);
    names_ = pairName(session.session.cardName, session.session.destName);
    outcome_.reset();
    show(Phase::Scanning());
    run(this, work_);
}

QCoro::Task<> CopyCheck::run(QPointer<CopyCheck> self, std::shared_ptr<Work> work) {
    QTimer postman;
    QObject::connect(&postman, &QTimer::timeout, self.data(), [self, work] {
        if (const auto mail = work->mail.take(); mail.phase)
            self->show(*mail.phase);
    });
    postman.start(kProgressInterval);
    auto checking = onWorker([work] { work->perform(); });
    const auto ending =
        waitForEnd(std::move(checking), work->stop.get_token(), {.patience = {}, .grace = kGrace});
    const bool hasEnded = co_await ending;
    postman.stop();
    if (!self)
        co_return;
    self->work_.reset();
    self->end(*work, hasEnded);
}

/// What a disk holds that does not answer is the worker's for good.
void CopyCheck::end(Work& work, bool hasEnded) {
    outcome_.emplace();
    if (hasEnded) {
        outcome_ = std::move(work.outcome);
    } else {
        outcome_->disk = work.session.session.destName;
        outcome_->isLeftBehind = true;
    }
    Q_EMIT changed();
    if (outcome_->record)
        Q_EMIT finished(work.session.session.id, *outcome_->record);
}

void CopyCheck::show(const OffloadPhase& phase) {
    phase_ = phase;
    Q_EMIT changed();
}

} // namespace slatewise
