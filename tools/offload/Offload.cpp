#include "Offload.h"

#include "Model/QtText.h"
#include "Offload/PathSize.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"
#include "Service/OutboxDrainer.h"
#include "Storage/AppDatabase.h"

#include <QEventLoop>

#include <chrono>

namespace slatewise::tool {

namespace {

/// How long the service may still take when everything else is done.
constexpr std::chrono::seconds kServicePatience{10};

/// The user's settings, with what the command line says instead. Whether anything is copied is the
/// command line's word alone: a script must not depend on a switch in a window. The same holds for
/// destinations.
UserDefaults& settled(const Arguments& arguments, UserDefaults& defaults) {
    auto settings = OffloadSettings::load(defaults);
    settings.verifyOnly = arguments.hashOnly;
    if (arguments.folderTemplate)
        settings.folderTemplate = *arguments.folderTemplate;
    if (arguments.project)
        settings.projectName = *arguments.project;
    for (const auto& name : arguments.excludes)
        settings.addExclude(name);
    settings.save(defaults);
    for (const auto* key : {"lastDestIDs", "lastDestID", "pickedDestBookmarks"})
        defaults.removeValue(key);
    return defaults;
}

/// Folders are all it knows of volumes; nobody looks at its reports, and nobody ejects anything.
Surroundings surroundingsWith(UserDefaults& defaults) {
    Surroundings surroundings;
    surroundings.defaults = &defaults;
    surroundings.openStore = Surroundings::userStore;
    surroundings.volumeFacts = Surroundings::factsOfThisMachine;
    surroundings.measure = nullptr;
    surroundings.unitRule = Surroundings::UnitRule::Optional;
    return surroundings;
}

} // namespace

Offload::Offload(const Arguments& arguments, UserDefaults& defaults, const Texts& texts,
                 ProgressDisplay& display)
    : arguments_(arguments), texts_(texts), display_(display),
      model_(surroundingsWith(settled(arguments, defaults))),
      results_(arguments.cards.size() * arguments.destinations.size()) {
    model_.setBatchListener(this);
}

std::vector<PairResult> Offload::run(std::stop_token stop) {
    stop_ = std::move(stop);
    const std::stop_callback cancel(stop_, [this] {
        QMetaObject::invokeMethod(&model_, &AppModel::cancelCopy, Qt::QueuedConnection);
    });
    QEventLoop loop;
    QObject::connect(&model_, &AppModel::batchFinished, &loop, &QEventLoop::quit);
    begin();
    loop.exec();
    // Who interrupts does not wait for a network.
    if (!stop_.stop_requested() && !QCoro::waitFor(OutboxDrainer::waitForAll(kServicePatience)))
        display_.note(texts_.reportsStillWait());
    return results_;
}

QCoro::Task<> Offload::begin() {
    for (const auto& destination : arguments_.destinations)
        co_await model_.addDestinationFolder(destination);
    for (const auto& card : arguments_.cards) {
        co_await model_.addCardFolder(card);
        model_.labelCard(toQString(card.native()), arguments_.camera, arguments_.crew);
    }
    model_.startCopy();
    if (stop_.stop_requested())
        model_.cancelCopy();
    if (model_.isBusy())
        co_return;
    // A folder has gone since it was named, so that there is nothing to begin with.
    display_.note(model_.progressTitle().toStdString());
    Q_EMIT model_.batchFinished();
}

void Offload::pairBegan(const BatchPair& pair) {
    std::string label;
    if (pair.position.pairCount > 1) {
        label = std::to_string(pair.position.pairIndex + 1) + "/" +
                std::to_string(pair.position.pairCount) + "  " +
                Text::displayable(pair.card.name()) + " → " +
                Text::displayable(pair.destination.name());
    }
    display_.setLabel(std::move(label));
}

void Offload::phaseChanged(const OffloadPhase& phase) {
    display_.show(phase);
}

void Offload::problemFound(const OffloadProblem& problem) {
    display_.note(problem.text(texts_.shared));
}

void Offload::pairEnded(const BatchPair&, const PairResult& result) {
    const auto& shared = texts_.shared;
    if (result.status == OutcomeStatus::Verified) {
        display_.finish(shared.verified(result.filesDone,
                                        PathSize::format(result.bytesDone, shared.language())));
        return;
    }
    if (result.status == OutcomeStatus::Hashed) {
        display_.finish(shared.hashed(result.filesDone));
        return;
    }
    if (result.runStatus && endedWell(*result.runStatus)) {
        display_.note(shared.failed(texts_.reportsNotWritten(result.message)));
        return;
    }
    display_.note(stop_.stop_requested() ? std::string(shared.cancelled())
                                         : shared.failed(result.message));
    if (!result.sessionRoot.empty() && !arguments_.hashOnly)
        display_.note(texts_.leftOnDestination(Text::displayable(result.sessionRoot.native())));
}

void Offload::batchEnded(const BatchResult& result) {
    if (!result.wasBegun && result.message)
        display_.note(texts_.shared.failed(*result.message));
    results_ = result.pairs;
}

} // namespace slatewise::tool
