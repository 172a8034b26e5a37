#pragma once

#include "Model/ModelState.h"
#include "Model/Volumes/FolderPresence.h"
#include "Model/Volumes/PickedFolders.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace slatewise {

/// Keeps the lists of cards and destinations true to what is mounted and picked, has their contents
/// measured, and does with them what the user says. GUI thread; whatever asks a disk happens on
/// workers.
class VolumeFollower : public QObject {
    Q_OBJECT

public:
    /// `state` outlives this.
    explicit VolumeFollower(ModelState& state);

    /// Takes up what is mounted and what was picked on earlier days, and goes on watching. Waits
    /// for disks no longer than a user would notice; one that answers later joins then.
    void begin();

    /// Brings the lists up to date. May be called at any time.
    void apply();

    void toggle(VolumeSide side, const std::string& id);
    void focusCard(const std::string& id);
    void remove(VolumeSide side, const std::string& id);
    void clear(VolumeSide side);
    /// Any mounted volume may be named, listed or not.
    void treatAs(VolumeSide side, const std::string& id);

    /// Asks the user for a folder.
    void pickFolder(VolumeSide side);
    /// As if picked by the user. Done when the folder is listed and ticked, or refused.
    QCoro::Task<> addFolder(VolumeSide side, std::filesystem::path folder);

    /// Looks how much is free on the disks that are ticked, as it does every few seconds by itself.
    void refreshFreeSpace();

    /// For another set of names that are skipped, or since something was offloaded; then looks up
    /// which of the cards were offloaded before.
    void measureCardsAnew();
    void persistDestinations();

Q_SIGNALS:
    /// A card is listed that never was in this process.
    void cardAppeared(const std::string& name);
    /// A destination is listed, at each look at the volumes anew.
    void destinationListed(const std::filesystem::path& folder);

private:
    using LookedAt = std::optional<ClassifiedVolume>;

    static QCoro::Task<> takeLater(QPointer<VolumeFollower> self, std::filesystem::path folder,
                                   QCoro::Task<LookedAt> looking);
    static QCoro::Task<> watchLater(QPointer<VolumeFollower> self, QCoro::Task<> looking);
    void watch();
    void announce(const std::vector<ClassifiedVolume>& newCards);
    void refreshPickedFolders();
    static QCoro::Task<> refreshPickedFolder(QPointer<VolumeFollower> self, VolumeSide side,
                                             ClassifiedVolume known);
    void useFolder(VolumeSide side, const ClassifiedVolume& folder);
    void persistPickedFolders();
    void measure(const VolumeIDs& forceIDs);
    static QCoro::Task<> refreshFreeSpaceOf(QPointer<VolumeFollower> self, MeasuringEntry disk);
    static QCoro::Task<> lookUp(QPointer<VolumeFollower> self, ClassifiedVolume card);
    static QCoro::Task<> measureOne(QPointer<VolumeFollower> self, MeasuringEntry entry,
                                    SkipNames skipNames, int generation);

    ModelState& state_;
    PickedFolderStore pickedFolders_;
    /// Remembered ones that have not answered since the start. They stay remembered.
    std::vector<std::filesystem::path> awaitedFolders_;
    FolderPresence folderPresence_;
    /// Also for picked folders. A child, so that it can be found and hurried.
    QTimer freeSpaceTimer_{this};
    /// Picked folders that have not answered yet what they are now.
    std::set<std::filesystem::path> askedFolders_;
    /// Disks that have not answered yet how much is free.
    VolumeIDs askedForFreeSpace_;
    /// What is mounted was looked at once. Which destinations are ticked depends on all of them, so
    /// that no half of them is shown before.
    bool isWatching_ = false;
};

} // namespace slatewise
