#include "Model/Copying/BatchControl.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Model/Volumes/FolderPresence.h"
#include "Offload/OffloadError.h"
#include "Platform/Text.h"
#include "Storage/AppLog.h"

#include <algorithm>

namespace slatewise {

namespace {

/// Nobody may take the last file at work for the end.
constexpr double kMostWhileBusy = 0.99;

BatchControl::Standing standingOf(const OffloadPhase& phase) {
    if (ProgressTexts::isBusy(phase))
        return BatchControl::Busy;
    if (std::holds_alternative<Phase::Hashed>(phase))
        return BatchControl::Hashed;
    if (ProgressTexts::isSuccess(phase))
        return BatchControl::Succeeded;
    return ProgressTexts::isFailure(phase) ? BatchControl::Failed : BatchControl::Resting;
}

} // namespace

BatchControl::BatchControl(ModelState& state, VolumeFollower& volumes,
                           const ServiceProfileFile& profile)
    : state_(state), volumes_(volumes), profile_(profile),
      unfinished_(UnfinishedOffload::load(state.defaults)) {
    connect(&state, &ModelState::changed, this, &BatchControl::show);
}

BatchControl::~BatchControl() {
    if (batch_)
        batch_->abandon();
}

void BatchControl::show() {
    // Whoever hears that a batch has ended finds all of it.
    showOutcome();
    showProgress();
    const bool canCopy = !state_.board.selection(VolumeSide::Card).ids.empty() &&
                         !state_.board.selection(VolumeSide::Destination).ids.empty() && !isBusy();
    if (canCopy == canCopy_)
        return;
    canCopy_ = canCopy;
    Q_EMIT canCopyChanged();
}

void BatchControl::showProgress() {
    auto now = shownNow();
    if (now == shown_)
        return;
    shown_ = std::move(now);
    Q_EMIT changed();
}

BatchControl::Shown BatchControl::shownNow() const {
    const auto l10n = state_.l10n();
    const bool stepsBack = state_.isVerdictOld && !ProgressTexts::isBusy(phase_);
    const OffloadPhase phase = stepsBack ? OffloadPhase() : phase_;
    Shown now;
    now.standing = standingOf(phase);
    now.fraction = ProgressTexts::fraction(phase, position_);
    now.percentText = toQString(ProgressTexts::percent(
        now.standing == Busy ? std::min(now.fraction, kMostWhileBusy) : now.fraction));
    now.isRefused = stepsBack && state_.notice;
    const auto& settings = now.standing == Busy ? lastPlan_.settings : state_.settings;
    now.title = toQString(now.isRefused
                              ? state_.notice->text(l10n)
                              : ProgressTexts::title(phase, position_, l10n, settings.verifyOnly));
    const bool hasEnded = lastResult_ && !ProgressTexts::isBusy(phase_);
    now.hasVerdict = hasEnded && !stepsBack && !state_.wasRefused;
    if (now.hasVerdict && now.standing == Failed)
        showFailure(now);
    else if (now.standing == Failed && wasStopped_)
        now.title = toQString(l10n.adviceStopped(button(settings.verifyOnly)));
    now.pace = toQString(ProgressTexts::pace(pace_, l10n));
    const auto pullable = ejects(true);
    const auto kept = ejects(false);
    if (now.hasVerdict && !pullable.isEmpty())
        now.title += "\n" + pullable.join(' ');
    if (now.hasVerdict)
        now.doNotPull = kept.join(' ');
    // The title has room for one of these sentences, and nothing shows once the verdict steps back.
    const bool areEjectsShown =
        now.hasVerdict ? pullable.size() <= 1 : pullable.isEmpty() && kept.isEmpty();
    now.hasMore = hasEnded && (!problems_.rows().empty() || !areEjectsShown ||
                               (!now.hasVerdict && lastResult_->message.has_value()));
    if (now.standing == Resting || (now.standing == Failed && state_.wasRefused))
        now.lastOffload = lastOffloadNow();
    return now;
}

std::string_view BatchControl::button(bool isHashing) const {
    return isHashing ? state_.l10n().hashOnly() : state_.l10n().copy();
}

QStringList BatchControl::ejects(bool mayBePulled) const {
    QStringList sentences;
    for (const auto& end : lastResult_ ? lastResult_->ejects : std::vector<CardEnd>()) {
        if (end.mayBePulled == mayBePulled)
            sentences << toQString(end.sentence);
    }
    return sentences;
}

void BatchControl::showFailure(Shown& now) const {
    const auto failed = BatchOutcome::failedPair(lastPlan_, *lastResult_);
    if (!failed)
        return;
    const auto l10n = state_.l10n();
    const auto& planned = failed->planned;
    now.failedPair = toQString(planned.name);
    now.title =
        toQString(l10n.failed(BatchOutcome::headline(*failed, isThere(planned.card), l10n)));
    now.advice = toQString(BatchOutcome::advice(*failed, lastResult_->wasHashing, l10n));
}

/// Not another one in its slot.
bool BatchControl::isThere(const ClassifiedVolume& card) const {
    const auto* listed = findVolume(state_.board.list(VolumeSide::Card), card.id());
    const auto& then = card.facts.identity;
    return listed && (!then || !listed->facts.identity || listed->facts.identity->isSame(*then));
}

QString BatchControl::lastOffloadNow() const {
    const auto l10n = state_.l10n();
    if (!lastResult_)
        return unfinished_ ? toQString(unfinished_->text(l10n)) : QString();
    const auto time = Clock::localText(lastEnd_, "HH:mm");
    if (lastResult_->message)
        return toQString(l10n.lastFailed(time));
    const auto files = lastResult_->filesDone;
    const bool hasNotes = !problems_.rows().empty();
    return toQString(lastResult_->wasHashing ? l10n.lastHashed(files, hasNotes, time)
                                             : l10n.lastVerified(files, hasNotes, time));
}

void BatchControl::showOutcome() {
    if (!lastResult_ || ProgressTexts::isBusy(phase_)) {
        pairs_.setRows({});
        problems_.setRows({});
        return;
    }
    pairs_.setRows(BatchOutcome::pairs(lastPlan_, *lastResult_, state_.l10n()));
    problems_.setRows(BatchOutcome::problems(*lastResult_, state_.l10n()));
}

QString BatchControl::report() const {
    if (!lastResult_)
        return {};
    QStringList lines{lastOffloadNow()};
    if (lastResult_->message) {
        Shown failure;
        failure.title = toQString(state_.l10n().failed(*lastResult_->message));
        showFailure(failure);
        lines << failure.title << failure.advice;
    }
    for (const auto& line : pairs_.rows())
        lines << line.text;
    lines << ejects(false) << ejects(true);
    for (const auto& line : problems_.rows())
        lines << line.text;
    return lines.join('\n');
}

QStringList BatchControl::news() const {
    constexpr std::size_t kMostProblems = 3;
    QStringList lines = shown_.title.split('\n').mid(1);
    for (const auto& further : {shown_.doNotPull, shown_.advice}) {
        if (!further.isEmpty())
            lines << further;
    }
    if (!shown_.hasVerdict)
        return lines;
    for (const auto& line : pairs_.rows())
        lines << line.text;
    const auto& problems = problems_.rows();
    for (std::size_t told = 0; told < std::min(problems.size(), kMostProblems); ++told)
        lines << problems[told].text;
    if (problems.size() > kMostProblems)
        lines << toQString(Text::replaced(state_.l10n().andMore(), "%1",
                                          std::to_string(problems.size() - kMostProblems)));
    return lines;
}

void BatchControl::start() {
    state_.notice.reset();
    wasStopped_ = false;
    const auto batchPlan = plan();
    if (batchPlan.cards.empty() || batchPlan.destinations.empty()) {
        phase_ = Phase::Failed{OffloadError(OffloadError::MissingSelection{}).text(state_.l10n())};
        state_.isVerdictOld = false;
        state_.wasRefused = true;
        return state_.publish();
    }
    if (auto refusal = findRefusal(batchPlan)) {
        state_.refuse(std::move(*refusal));
        if (const auto card = state_.targetCard())
            Q_EMIT state_.cardWanted(*card);
        return;
    }
    if (batch_)
        batch_->abandon();
    position_ = {};
    state_.isVerdictOld = false;
    state_.wasRefused = false;
    phase_ = Phase::Scanning{};
    state_.publish();
    batch_ = std::make_shared<Batch>(batchPlan, state_.surroundings, state_.database, *this);
    batch_->start();
}

void BatchControl::cancel() {
    if (!batch_)
        return;
    wasStopped_ = true;
    batch_->cancel();
}

BatchPlan BatchControl::plan() const {
    auto cards = state_.board.selected(VolumeSide::Card);
    const auto totalBytes = state_.contentSizes.totalOf(cards);
    auto destinations = state_.board.selected(VolumeSide::Destination);
    for (auto& destination : destinations) {
        auto& free = destination.facts.freeBytes;
        free = state_.contentSizes.freeBytes(destination.id()).value_or(free);
    }
    return {.settings = state_.settings,
            .language = state_.language,
            .cards = std::move(cards),
            .destinations = std::move(destinations),
            .cameraByCardID = state_.cardUnits.cameraByCardID,
            .ekipByCardID = state_.cardUnits.ekipByCardID,
            .totalBytes = totalBytes,
            .serviceProfile = profile_.current()};
}

/// What keeps the user from a batch; asks for units where they are missing.
std::optional<Notice> BatchControl::findRefusal(const BatchPlan& plan) {
    const auto& folderTemplate = plan.settings.folderTemplate;
    if (FolderTemplate::leadsOut(folderTemplate))
        return Notice{Notice::Kind::TemplateLeadsOut, folderTemplate};
    auto& missing = state_.cardUnits.cardsNeedingUnit;
    missing.clear();
    for (const auto& card : plan.cards) {
        if (!state_.cardUnits.cameraLabel(card.id()).empty())
            continue;
        if (missing.empty())
            state_.board.selection(VolumeSide::Card).focused = card.id();
        missing.insert(card.id());
    }
    const auto* first = missing.empty() ? nullptr : state_.board.selectedCard();
    if (!first)
        return std::nullopt;
    return Notice{Notice::Kind::CardWithoutUnit, first->name(), first->id()};
}

void BatchControl::batchBegan(const BatchPlan& plan) {
    lastResult_.reset();
    lastPlan_ = plan;
    unfinished_.reset();
    std::vector<std::int64_t> bytesOfPairs;
    for (const auto& pair : plan.pairs())
        bytesOfPairs.push_back(state_.contentSizes.usedBytes(pair.card.id()).value_or(0));
    timeLeft_ = BatchTimeLeft(std::move(bytesOfPairs));
    volumes_.persistDestinations();
    state_.settings.save(state_.defaults);
    AppLog::append(plan.logLine());
}

void BatchControl::pairBegan(const BatchPair& pair) {
    position_ = pair.position;
    phase_ = Phase::Scanning{};
    pace_ = {};
    timeLeft_.beginPair(static_cast<std::size_t>(pair.position.pairIndex),
                        state_.surroundings.now());
    if (!lastPlan_.settings.verifyOnly) {
        unfinished_ = {
            Text::displayable(pair.card.name()), Text::displayable(pair.destination.name()), {}};
        unfinished_->save(state_.defaults);
    }
    state_.publish();
}

void BatchControl::footageBegan(const std::filesystem::path& folder) {
    if (!unfinished_)
        return;
    unfinished_->folder = Text::displayable(folder.native());
    unfinished_->save(state_.defaults);
}

void BatchControl::phaseChanged(const OffloadPhase& phase) {
    phase_ = phase;
    pace_ = timeLeft_.update(phase, state_.surroundings.now());
    showProgress();
}

void BatchControl::pairEnded(const BatchPair&, const PairResult&) {
    volumes_.refreshFreeSpace();
}

void BatchControl::batchEnded(const BatchResult& result) {
    batch_.reset();
    position_ = {};
    pace_ = {};
    // Whatever was ticked in the meantime.
    state_.isVerdictOld = false;
    // A refusal says nothing of the batch before, nor does that of the refusal.
    state_.wasRefused = !result.wasBegun;
    if (result.wasBegun) {
        unfinished_.reset();
        UnfinishedOffload::forget(state_.defaults);
        lastResult_ = result;
        lastEnd_ = Clock::now();
    }
    auto& selection = state_.board.selection(VolumeSide::Card);
    if (result.message) {
        phase_ = Phase::Failed{*result.message};
        for (const auto& card : result.finishedCardIDs)
            selection.ids.erase(card);
        // A refusal leaves everything as it was.
        if (result.wasBegun && selection.focused && !selection.contains(*selection.focused))
            selection.focusAny();
    } else {
        phase_ =
            result.wasHashing
                ? OffloadPhase(Phase::Hashed{result.filesDone})
                : OffloadPhase(Phase::Verified{result.filesDone, result.bytesDone,
                                               static_cast<int>(lastPlan_.destinations.size())});
        selection = {};
        state_.cardUnits.cameraByCardID.clear();
        state_.cardUnits.ekipByCardID.clear();
    }
    state_.publish();
    showReport(this, result.report);
}

/// The archive may lie on a disk that takes its time.
QCoro::Task<> BatchControl::showReport(QPointer<BatchControl> self,
                                       std::optional<std::filesystem::path> report) {
    if (report && self->state_.surroundings.openFile) {
        const auto looking = isThereLater(*report);
        const bool isThere = co_await looking;
        if (isThere && self)
            self->state_.surroundings.openFile(*report);
    }
    if (self)
        Q_EMIT self->finished();
}

} // namespace slatewise
