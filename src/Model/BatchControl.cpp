#include "Model/BatchControl.h"

#include "Model/QtText.h"
#include "Offload/OffloadError.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

namespace slatewise {

namespace {

BatchControl::Standing standingOf(const OffloadPhase& phase) {
    if (ProgressTexts::isBusy(phase))
        return BatchControl::Busy;
    if (ProgressTexts::isSuccess(phase))
        return BatchControl::Succeeded;
    return ProgressTexts::isFailure(phase) ? BatchControl::Failed : BatchControl::Resting;
}

} // namespace

BatchControl::BatchControl(ModelState& state, VolumeFollower& volumes,
                           const ServiceProfileFile& profile)
    : state_(state), volumes_(volumes), profile_(profile) {
    connect(&state, &ModelState::changed, this, &BatchControl::show);
}

BatchControl::~BatchControl() {
    if (batch_)
        batch_->abandon();
}

void BatchControl::show() {
    showProgress();
    const bool canCopy = !state_.board.selection(VolumeSide::Card).ids.empty() &&
                         !state_.board.selection(VolumeSide::Destination).ids.empty() && !isBusy();
    if (canCopy == canCopy_)
        return;
    canCopy_ = canCopy;
    Q_EMIT canCopyChanged();
}

void BatchControl::showProgress() {
    Shown now;
    now.standing = standingOf(phase_);
    now.fraction = ProgressTexts::fraction(phase_, position_);
    now.percentText = toQString(ProgressTexts::percent(now.fraction));
    now.title = toQString(ProgressTexts::title(phase_, position_, state_.l10n()));
    if (now == shown_)
        return;
    shown_ = std::move(now);
    Q_EMIT changed();
}

void BatchControl::start() {
    const auto batchPlan = plan();
    if (batchPlan.cards.empty() || batchPlan.destinations.empty()) {
        phase_ =
            Phase::Failed{OffloadError(OffloadError::MissingSelection{}).localizedDescription()};
        return state_.publish();
    }
    if (!everyCardHasItsUnit(batchPlan))
        return state_.publish();
    if (batch_)
        batch_->abandon();
    position_ = {};
    phase_ = Phase::Scanning{};
    state_.publish();
    batch_ = std::make_shared<Batch>(batchPlan, state_.surroundings, state_.database, *this);
    batch_->start();
}

void BatchControl::cancel() {
    if (batch_)
        batch_->cancel();
}

BatchPlan BatchControl::plan() const {
    auto cards = state_.board.selected(VolumeSide::Card);
    const auto totalBytes = state_.contentSizes.totalOf(cards);
    return {.settings = state_.settings,
            .language = state_.language,
            .cards = std::move(cards),
            .destinations = state_.board.selected(VolumeSide::Destination),
            .cameraByCardID = state_.cardUnits.cameraByCardID,
            .ekipByCardID = state_.cardUnits.ekipByCardID,
            .totalBytes = totalBytes,
            .serviceProfile = profile_.current()};
}

/// Asks for units where they are missing.
bool BatchControl::everyCardHasItsUnit(const BatchPlan& plan) {
    auto& missing = state_.cardUnits.cardsNeedingUnit;
    missing.clear();
    for (const auto& card : plan.cards) {
        if (!state_.cardUnits.cameraLabel(card.id()).empty())
            continue;
        if (missing.empty())
            state_.board.selection(VolumeSide::Card).focused = card.id();
        missing.insert(card.id());
    }
    return missing.empty();
}

void BatchControl::batchBegan(const BatchPlan& plan) {
    volumes_.persistDestinations();
    state_.settings.save(state_.defaults);
    AppLog::append(plan.logLine());
    if (listener_)
        listener_->batchBegan(plan);
}

void BatchControl::pairBegan(const BatchPair& pair) {
    position_ = pair.position;
    phase_ = Phase::Scanning{};
    state_.publish();
    if (listener_)
        listener_->pairBegan(pair);
}

void BatchControl::phaseChanged(const OffloadPhase& phase) {
    phase_ = phase;
    showProgress();
    if (listener_)
        listener_->phaseChanged(phase);
}

void BatchControl::problemFound(const OffloadProblem& problem) {
    if (listener_)
        listener_->problemFound(problem);
}

void BatchControl::pairEnded(const BatchPair& pair, const PairResult& result) {
    if (listener_)
        listener_->pairEnded(pair, result);
}

void BatchControl::batchEnded(const BatchResult& result) {
    batch_.reset();
    position_ = {};
    auto& selection = state_.board.selection(VolumeSide::Card);
    if (result.message) {
        phase_ = Phase::Failed{*result.message};
        for (const auto& card : result.finishedCardIDs)
            selection.ids.erase(card);
        // A refusal leaves everything as it was.
        if (result.wasBegun && selection.focused && !selection.contains(*selection.focused))
            selection.focusAny();
    } else {
        phase_ = result.wasHashing
                     ? OffloadPhase(Phase::Hashed{result.filesDone})
                     : OffloadPhase(Phase::Verified{result.filesDone, result.bytesDone});
        selection = {};
        state_.cardUnits.cameraByCardID.clear();
        state_.cardUnits.ekipByCardID.clear();
    }
    state_.publish();
    if (listener_)
        listener_->batchEnded(result);
    showReport(this, result.report);
}

/// The archive may lie on a disk that takes its time.
QCoro::Task<> BatchControl::showReport(QPointer<BatchControl> self,
                                       std::optional<std::filesystem::path> report) {
    if (report && self->state_.surroundings.openFile) {
        const auto looking = onWorker([path = *report] { return FileSystem::exists(path); });
        const bool isThere = co_await looking;
        if (isThere && self)
            self->state_.surroundings.openFile(*report);
    }
    if (self)
        Q_EMIT self->finished();
}

} // namespace slatewise
