#include "Model/AppModel.h"

#include "Model/DestinationMemory.h"
#include "Model/QtText.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Reports/ReportFolder.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"

#include <QPointer>

#include <algorithm>

// Cards and destinations: what is mounted and picked, and what the user does with it.

namespace slatewise {

namespace {

const ClassifiedVolume* shownVolume(const std::vector<ClassifiedVolume>& volumes,
                                    const QString& volumeID) {
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return toQString(volume.id()) == volumeID;
    });
    return found == volumes.end() ? nullptr : &*found;
}

} // namespace

void AppModel::applyVolumes() {
    const auto mounted = surroundings_.currentVolumes ? surroundings_.currentVolumes()
                                                      : std::vector<ClassifiedVolume>();
    const auto applied =
        board_.apply(mounted, DestinationMemory::load(defaults_),
                     [this](const auto& folder) { return folderPresence_.isThere(folder); });
    persistPickedFolders();
    refreshContentSizes(applied.appeared);
    announce(applied.newCards);
    for (const auto& destination : board_.lists().destinations)
        reportMigration_.migrateOnce(
            ReportFolder::destinationReportsRoot(destination.facts.mountPoint));
    publish();
}

void AppModel::announce(const std::vector<ClassifiedVolume>& newCards) {
    for (const auto& card : newCards) {
        // The store may be at work for the batch; nobody waits for this line.
        onWorker([database = database_, name = Text::displayable(card.name())] {
            try {
                database->recordActivity(std::nullopt, "card_detected", name);
            } catch (const std::exception& failure) {
                AppLog::append("Activity not recorded: " + describe(failure));
            }
        });
        notifyService(card);
    }
}

void AppModel::toggleCard(const QString& volumeID) {
    const auto* card = shownVolume(board_.lists().cards, volumeID);
    if (!card)
        return;
    const auto id = card->id();
    if (board_.cardSelection().toggle(id)) {
        cardUnits_.clearUnit(id);
        assignCurrentEkip(id);
    } else {
        cardUnits_.cardsNeedingUnit.erase(id);
    }
    publish();
}

void AppModel::focusCard(const QString& volumeID) {
    if (const auto* card = shownVolume(board_.lists().cards, volumeID)) {
        board_.cardSelection().focused = card->id();
        publish();
    }
}

void AppModel::removeCard(const QString& volumeID) {
    const auto* listed = shownVolume(board_.lists().cards, volumeID);
    if (!listed)
        return;
    const auto card = *listed;
    board_.removeCard(card);
    cardUnits_.cardsNeedingUnit.erase(card.id());
    applyVolumes();
}

void AppModel::clearAllCards() {
    board_.clearAllCards();
    cardUnits_.cardsNeedingUnit.clear();
    applyVolumes();
}

void AppModel::toggleDestination(const QString& volumeID) {
    if (const auto* destination = shownVolume(board_.lists().destinations, volumeID)) {
        board_.destinationSelection().toggle(destination->id());
        persistDestIDs();
        publish();
    }
}

void AppModel::focusDestination(const QString& volumeID) {
    if (const auto* destination = shownVolume(board_.lists().destinations, volumeID)) {
        board_.destinationSelection().focused = destination->id();
        publish();
    }
}

void AppModel::removeDestination(const QString& volumeID) {
    const auto* listed = shownVolume(board_.lists().destinations, volumeID);
    if (!listed)
        return;
    const auto destination = *listed;
    board_.removeDestination(destination);
    persistDestIDs();
    applyVolumes();
}

void AppModel::clearAllDestinations() {
    board_.clearAllDestinations();
    persistDestIDs();
    applyVolumes();
}

void AppModel::treatAsCard(const QString& volumeID) {
    board_.treatAsCard(volumeID.toStdString());
    applyVolumes();
}

void AppModel::treatAsDestination(const QString& volumeID) {
    board_.treatAsDestination(volumeID.toStdString());
    applyVolumes();
}

void AppModel::persistDestIDs() {
    DestinationMemory::save(board_.destinationSelection().ids, defaults_);
}

void AppModel::persistPickedFolders() {
    pickedFolders_.persistIfNeeded(board_.corrections().extraCards,
                                   board_.corrections().extraDestinations);
}

void AppModel::refreshContentSizes(const VolumeIDs& forceIDs) {
    if (!surroundings_.measure)
        return;
    auto job = contentSizes_.begin(board_.lists(), forceIDs, settings_.skipNames());
    if (job)
        measureAll(QPointer(this), std::move(*job));
}

QCoro::Task<> AppModel::measureAll(QPointer<AppModel> model, MeasuringJob job) {
    const auto measure = model->surroundings_.measure;
    for (const auto& entry : job.entries) {
        const auto measuring =
            onWorker([entry, names = job.skipNames, measure] { return measure(entry, names); });
        const auto measured = co_await measuring;
        // A newer job measures whatever this one has left out.
        if (!model || !model->contentSizes_.accept(job.generation, entry.id, measured.usedBytes))
            co_return;
        model->board_.applyCapacity(entry.id, measured.totalBytes, measured.freeBytes);
        model->publish();
    }
}

} // namespace slatewise
