#include "Offload.h"

#include "Offload/PathSize.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"
#include "Service/OutboxDrainer.h"
#include "Service/ServiceProfileFile.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"
#include "Storage/UserStore.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/PickedFolder.h"

#include <QEventLoop>

#include <chrono>

namespace slatewise::tool {

namespace {

/// How long the service may still take when everything else is done.
constexpr std::chrono::seconds kServicePatience{10};

/// The user's settings, with what the command line says instead. Whether anything is copied is the
/// command line's word alone: a script must not depend on a switch in a window.
OffloadSettings settingsFor(const Arguments& arguments) {
    auto settings = OffloadSettings::load(UserDefaults::standard());
    settings.verifyOnly = arguments.hashOnly;
    settings.writesHashList = arguments.writesHashList.value_or(settings.writesHashList);
    settings.folderTemplate = arguments.folderTemplate.value_or(settings.folderTemplate);
    settings.projectName = arguments.project.value_or(settings.projectName);
    for (const auto& name : arguments.excludes)
        settings.addExclude(name);
    return settings;
}

std::vector<ClassifiedVolume> volumes(const std::vector<std::filesystem::path>& folders,
                                      VolumeKind kind) {
    std::vector<ClassifiedVolume> result;
    for (const auto& folder : folders)
        result.push_back(pickedFolder(DiskUtilClient::facts(folder), folder, kind));
    return result;
}

BatchPlan planFor(const Arguments& arguments, AppLanguage language) {
    BatchPlan plan;
    plan.settings = settingsFor(arguments);
    plan.language = language;
    plan.cards = volumes(arguments.cards, VolumeKind::CameraCard);
    plan.destinations = volumes(arguments.destinations, VolumeKind::Destination);
    for (const auto& card : plan.cards) {
        plan.cameraByCardID[card.id()] = Text::pathSafeLabel(arguments.camera);
        plan.ekipByCardID[card.id()] = arguments.crew;
    }
    plan.serviceProfile = ServiceProfileFile(SupportPaths::applicationSupport()).current();
    return plan;
}

} // namespace

std::vector<PairResult> Offload::run(std::stop_token stop) {
    stop_ = std::move(stop);
    AppLog::prune(SupportPaths::logsDirectory(), Clock::now());
    BatchListener& listener = *this;
    const auto batch = std::make_shared<Batch>(planFor(arguments_, texts_.shared.language()),
                                               BatchSurroundings(), openUserStore(), listener);
    const std::stop_callback cancel(stop_, [this, batch] {
        QMetaObject::invokeMethod(
            &loop_, [batch] { batch->cancel(); }, Qt::QueuedConnection);
    });
    batch->start();
    loop_.exec();
    // Who interrupts does not wait for a network.
    if (!stop_.stop_requested() && !QCoro::waitFor(OutboxDrainer::waitForAll(kServicePatience)))
        display_.note(texts_.reportsStillWait());
    return results_;
}

void Offload::batchBegan(const BatchPlan& plan) {
    AppLog::append(plan.logLine());
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
    loop_.quit();
}

} // namespace slatewise::tool
