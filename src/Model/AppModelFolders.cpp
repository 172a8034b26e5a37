#include "Model/AppModel.h"

#include "Model/FolderChooser.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"
#include "Volumes/PickedFolder.h"

#include <algorithm>
#include <chrono>
#include <future>

// Folders that the user picks, and what is there when the program starts.

namespace slatewise {

namespace {

using VolumeFactsOf = std::function<VolumeFacts(const std::filesystem::path&)>;

/// How long the start waits for volumes before it goes on without them. One that answers needs
/// milliseconds.
constexpr std::chrono::seconds kPatience{2};

ClassifiedVolume pickedVolume(const VolumeFactsOf& facts, const std::filesystem::path& folder,
                              VolumeKind kind) {
    return pickedFolder(facts ? facts(folder) : VolumeFacts(), folder, kind);
}

const ClassifiedVolume* findPlace(const std::vector<ClassifiedVolume>& volumes,
                                  const std::filesystem::path& mountPoint) {
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return volume.facts.mountPoint == mountPoint;
    });
    return found == volumes.end() ? nullptr : &*found;
}

} // namespace

/// What is there at the start: mounted volumes, and picked destinations of earlier days. Which
/// destinations are ticked depends on all of them, so nothing is shown of one half before the
/// other.
struct AppModel::FirstLook {
    std::vector<ClassifiedVolume> pickedDestinations;
    std::promise<void> done;
};

/// On a worker, since a volume may not answer, but awaited as long as a user would not notice: a
/// window that appears should show what is mounted.
void AppModel::takeUpVolumes() {
    pickedFolders_.forgetCards();
    folderPresence_.setOnGone([this] { applyVolumes(); });
    const auto look = std::make_shared<FirstLook>();
    auto done = look->done.get_future();
    auto looking =
        onWorker([look, paths = pickedFolders_.storedDestinations(),
                  facts = surroundings_.volumeFacts, lookAtVolumes = surroundings_.lookAtVolumes] {
            for (const auto& folder : paths) {
                if (FileSystem::exists(folder))
                    look->pickedDestinations.push_back(
                        pickedVolume(facts, folder, VolumeKind::Destination));
            }
            if (lookAtVolumes)
                lookAtVolumes();
            look->done.set_value();
        });
    if (done.wait_for(kPatience) == std::future_status::ready)
        beginWith(*look);
    else
        beginLater(this, std::move(looking), look);
}

QCoro::Task<> AppModel::beginLater(QPointer<AppModel> model, QCoro::Task<> looking,
                                   std::shared_ptr<FirstLook> look) {
    co_await looking;
    if (model)
        model->beginWith(*look);
}

void AppModel::beginWith(const FirstLook& look) {
    for (const auto& folder : look.pickedDestinations)
        board_.addPickedDestination(folder);
    if (surroundings_.watchVolumes)
        surroundings_.watchVolumes([model = QPointer(this)] {
            if (model)
                model->applyVolumes();
        });
    applyVolumes();
}

void AppModel::restoreReportsFolder() {
    const auto reports = pickedFolders_.storedReportsFolder();
    if (reports && folderPresence_.isThere(*reports) &&
        Text::trimmed(settings_.outputFolderPath).empty())
        settings_.outputFolderPath = reports->native();
    updateReportsFolder();
}

void AppModel::pickCardFolder() {
    if (!surroundings_.folderChooser)
        return;
    surroundings_.folderChooser->choose(
        std::string(l10n().pickCardFolder()), std::string(l10n().select()),
        [model = QPointer(this)](std::optional<std::filesystem::path> folder) {
            if (model && folder)
                model->addCardFolder(*folder);
        });
}

void AppModel::pickDestinationFolder() {
    if (!surroundings_.folderChooser)
        return;
    surroundings_.folderChooser->choose(
        std::string(l10n().pickDestFolder()), std::string(l10n().select()),
        [model = QPointer(this)](std::optional<std::filesystem::path> folder) {
            if (model && folder)
                model->addDestinationFolder(*folder);
        });
}

QCoro::Task<ClassifiedVolume> AppModel::folderVolume(std::filesystem::path folder,
                                                     VolumeKind kind) const {
    return onWorker([facts = surroundings_.volumeFacts, folder, kind] {
        return pickedVolume(facts, folder, kind);
    });
}

QCoro::Task<> AppModel::addCardFolder(std::filesystem::path folder) {
    const QPointer model(this);
    const auto volume =
        co_await folderVolume(PickedFolders::normalized(folder), VolumeKind::CameraCard);
    if (model)
        model->useCardFolder(volume);
}

QCoro::Task<> AppModel::addDestinationFolder(std::filesystem::path folder) {
    const QPointer model(this);
    const auto volume =
        co_await folderVolume(PickedFolders::normalized(folder), VolumeKind::Destination);
    if (model)
        model->useDestinationFolder(volume);
}

void AppModel::useCardFolder(const ClassifiedVolume& folder) {
    board_.addPickedCard(folder);
    applyVolumes();
    if (const auto* card = findPlace(board_.lists().cards, folder.facts.mountPoint)) {
        const auto id = card->id();
        board_.cardSelection().ids.insert(id);
        board_.cardSelection().focused = id;
        cardUnits_.clearUnit(id);
        assignCurrentEkip(id);
    }
    persistPickedFolders();
    AppLog::append("Manuel kart: " + folder.facts.mountPoint.native());
    publish();
}

void AppModel::useDestinationFolder(const ClassifiedVolume& folder) {
    board_.addPickedDestination(folder);
    applyVolumes();
    if (const auto* destination = findPlace(board_.lists().destinations, folder.facts.mountPoint)) {
        board_.destinationSelection().ids.insert(destination->id());
        board_.destinationSelection().focused = destination->id();
    }
    persistDestIDs();
    persistPickedFolders();
    AppLog::append("Manuel hedef: " + folder.facts.mountPoint.native());
    publish();
}

} // namespace slatewise
