#include "Model/AppModel.h"

#include "Offload/OffloadError.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"

// The button: what is looked at before a batch, and what a batch leaves behind in the model.

namespace slatewise {

void AppModel::startCopy() {
    const auto plan = batchPlan();
    if (plan.cards.empty() || plan.destinations.empty())
        return fail(OffloadError(OffloadError::MissingSelection{}).localizedDescription());
    if (!everyCardHasItsUnit(plan))
        return publish();
    if (batch_)
        batch_->abandon();
    batchPosition_ = {};
    phase_ = Phase::Scanning{};
    publish();
    BatchListener& listener = *this;
    batch_ = std::make_shared<Batch>(plan, surroundings_, database_, listener);
    batch_->start();
}

void AppModel::cancelCopy() {
    if (batch_)
        batch_->cancel();
}

BatchPlan AppModel::batchPlan() const {
    return {.settings = settings_,
            .language = language_,
            .cards = board_.selectedCards(),
            .destinations = board_.selectedDests(),
            .cameraByCardID = cardUnits_.cameraByCardID,
            .ekipByCardID = cardUnits_.ekipByCardID,
            .totalBytes = contentSizes_.totalOf(board_.selectedCards()),
            .serviceProfile = serviceProfile_.current()};
}

/// Asks for units where they are missing.
bool AppModel::everyCardHasItsUnit(const BatchPlan& plan) {
    cardUnits_.cardsNeedingUnit.clear();
    if (surroundings_.unitRule == Surroundings::UnitRule::Optional)
        return true;
    for (const auto& card : plan.cards) {
        if (!cardUnits_.cameraLabel(card.id()).empty())
            continue;
        if (cardUnits_.cardsNeedingUnit.empty())
            board_.cardSelection().focused = card.id();
        cardUnits_.cardsNeedingUnit.insert(card.id());
    }
    return cardUnits_.cardsNeedingUnit.empty();
}

void AppModel::fail(const std::string& message) {
    phase_ = Phase::Failed{message};
    publish();
}

void AppModel::batchBegan(const BatchPlan& plan) {
    persistDestIDs();
    settings_.save(defaults_);
    AppLog::append(plan.logLine());
    if (batchListener_)
        batchListener_->batchBegan(plan);
}

void AppModel::pairBegan(const BatchPair& pair) {
    batchPosition_ = pair.position;
    phase_ = Phase::Scanning{};
    publish();
    if (batchListener_)
        batchListener_->pairBegan(pair);
}

void AppModel::phaseChanged(const OffloadPhase& phase) {
    phase_ = phase;
    publishProgress();
    if (batchListener_)
        batchListener_->phaseChanged(phase);
}

void AppModel::problemFound(const OffloadProblem& problem) {
    if (batchListener_)
        batchListener_->problemFound(problem);
}

void AppModel::pairEnded(const BatchPair& pair, const PairResult& result) {
    if (batchListener_)
        batchListener_->pairEnded(pair, result);
}

void AppModel::batchEnded(const BatchResult& result) {
    batch_.reset();
    batchPosition_ = {};
    auto& selection = board_.cardSelection();
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
        cardUnits_.cameraByCardID.clear();
        cardUnits_.ekipByCardID.clear();
    }
    publish();
    if (batchListener_)
        batchListener_->batchEnded(result);
    showWhatIsLeft(this, result.report);
}

/// The store may be at work for others, and the archive may lie on a disk that takes its time.
QCoro::Task<> AppModel::showWhatIsLeft(QPointer<AppModel> model,
                                       std::optional<std::filesystem::path> report) {
    const auto reading = onWorker([database = model->database_] { return latestOf(*database); });
    auto sessions = co_await reading;
    if (!model)
        co_return;
    if (sessions)
        model->recentSessions_ = std::move(*sessions);
    if (report && model->surroundings_.openFile) {
        auto looking = onWorker([path = *report] { return FileSystem::exists(path); });
        if (co_await looking && model)
            model->surroundings_.openFile(*report);
    }
    if (model)
        Q_EMIT model->batchFinished();
}

} // namespace slatewise
