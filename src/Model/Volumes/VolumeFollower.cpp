#include "Model/Volumes/VolumeFollower.h"

#include "Language/L10n.h"
#include "Model/FolderChooser.h"
#include "Model/Volumes/DestinationMemory.h"
#include "Model/Volumes/FolderLook.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

#include <chrono>
#include <future>
#include <utility>

namespace slatewise {

namespace {

constexpr std::chrono::seconds kFreeSpaceInterval{5};

const ClassifiedVolume* findPlace(const std::vector<ClassifiedVolume>& volumes,
                                  const std::filesystem::path& mountPoint) {
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return volume.facts.mountPoint == mountPoint;
    });
    return found == volumes.end() ? nullptr : &*found;
}

/// Work on a worker whose result can be waited for, and awaited if it did not come in time.
template <typename Result>
struct Look {
    std::future<Result> inTime;
    QCoro::Task<Result> later;
};

template <typename Work>
auto begunLook(Work work) {
    using Result = std::invoke_result_t<Work&>;
    const auto answer = std::make_shared<std::promise<Result>>();
    auto inTime = answer->get_future();
    return Look<Result>{std::move(inTime), onWorker([answer, work = std::move(work)]() mutable {
                            if constexpr (std::is_void_v<Result>) {
                                work();
                                answer->set_value();
                            } else {
                                auto result = work();
                                answer->set_value(result);
                                return result;
                            }
                        })};
}

} // namespace

VolumeFollower::VolumeFollower(ModelState& state) : state_(state), pickedFolders_(state.defaults) {
    folderPresence_.setOnGone([this] { apply(); });
    connect(&freeSpaceTimer_, &QTimer::timeout, this, &VolumeFollower::refreshFreeSpace);
    connect(&freeSpaceTimer_, &QTimer::timeout, this, &VolumeFollower::refreshPickedFolders);
    freeSpaceTimer_.start(kFreeSpaceInterval);
}

void VolumeFollower::begin() {
    const auto end = std::chrono::steady_clock::now() + state_.surroundings.patienceAtStart;
    pickedFolders_.forgetCards();
    state_.board.treatAsDestinations(DestinationMemory::loadWanted(state_.defaults));
    // Each by itself: a folder on a share that is gone must not keep back the volumes.
    std::vector<std::pair<std::filesystem::path, Look<LookedAt>>> folders;
    for (const auto& folder : pickedFolders_.storedDestinations()) {
        auto look = begunLook([folder, look = FolderLook(state_.surroundings)]() -> LookedAt {
            if (!FileSystem::exists(folder))
                return std::nullopt;
            return look.at(folder, VolumeSide::Destination);
        });
        folders.emplace_back(folder, std::move(look));
    }
    auto volumes = begunLook([look = state_.surroundings.lookAtVolumes] {
        if (look)
            look();
    });
    for (auto& [folder, look] : folders) {
        if (look.inTime.wait_until(end) != std::future_status::ready) {
            awaitedFolders_.push_back(folder);
            takeLater(this, folder, std::move(look.later));
        } else if (const auto found = look.inTime.get()) {
            state_.board.addPicked(VolumeSide::Destination, *found);
        }
    }
    if (volumes.inTime.wait_until(end) == std::future_status::ready)
        watch();
    else
        watchLater(this, std::move(volumes.later));
}

QCoro::Task<> VolumeFollower::takeLater(QPointer<VolumeFollower> self, std::filesystem::path folder,
                                        QCoro::Task<LookedAt> looking) {
    const auto found = co_await looking;
    // Nobody waits for it any more once all were put aside.
    if (!self || std::erase(self->awaitedFolders_, folder) == 0)
        co_return;
    if (found)
        self->state_.board.addPicked(VolumeSide::Destination, *found);
    if (self->isWatching_)
        self->apply();
}

QCoro::Task<> VolumeFollower::watchLater(QPointer<VolumeFollower> self, QCoro::Task<> looking) {
    co_await looking;
    if (self)
        self->watch();
}

void VolumeFollower::watch() {
    isWatching_ = true;
    if (state_.surroundings.watchVolumes)
        state_.surroundings.watchVolumes([self = QPointer(this)] {
            if (self)
                self->apply();
        });
    apply();
}

void VolumeFollower::apply() {
    const auto& currentVolumes = state_.surroundings.currentVolumes;
    const auto mounted = currentVolumes ? currentVolumes() : std::vector<ClassifiedVolume>();
    const auto applied =
        state_.board.apply(mounted, DestinationMemory::load(state_.defaults),
                           [this](const auto& folder) { return folderPresence_.isThere(folder); });
    persistPickedFolders();
    // Another card may lie in the slot of the one that is known.
    const auto isGone = [&](const std::string& card) {
        return applied.appeared.contains(card) ||
               !findVolume(state_.board.list(VolumeSide::Card), card);
    };
    std::erase_if(state_.pastOffloads, [&](const auto& past) { return isGone(past.first); });
    std::erase_if(state_.cardUnits.cardsNeedingUnit, [&](const auto& card) {
        return isGone(card) || !state_.board.selection(VolumeSide::Card).contains(card);
    });
    if (state_.notice && !state_.notice->cardID.empty() && isGone(state_.notice->cardID))
        state_.notice.reset();
    measure(applied.appeared);
    announce(applied.newCards);
    for (const auto& destination : state_.board.list(VolumeSide::Destination))
        Q_EMIT destinationListed(destination.facts.mountPoint);
    refreshPickedFolders();
    state_.publish();
}

void VolumeFollower::refreshPickedFolders() {
    // An answer that is there at once changes what is picked.
    const auto corrections = state_.board.corrections();
    for (const auto& folder : corrections.extraCards)
        refreshPickedFolder(this, VolumeSide::Card, folder);
    for (const auto& folder : corrections.extraDestinations)
        refreshPickedFolder(this, VolumeSide::Destination, folder);
}

QCoro::Task<> VolumeFollower::refreshPickedFolder(QPointer<VolumeFollower> self, VolumeSide side,
                                                  ClassifiedVolume known) {
    const auto& folder = known.facts.mountPoint;
    // One that is silent is not asked again before it has answered.
    if (!self->askedFolders_.insert(folder).second)
        co_return;
    const auto looking = onWorker([known, side, look = FolderLook(self->state_.surroundings)] {
        return look.change(known, side);
    });
    const auto changed = co_await looking;
    if (!self)
        co_return;
    self->askedFolders_.erase(folder);
    if (!changed)
        co_return;
    self->state_.board.replacePicked(side, *changed);
    // Before the first look at the volumes nobody knows what there is to tick.
    if (self->isWatching_)
        self->apply();
}

void VolumeFollower::announce(const std::vector<ClassifiedVolume>& newCards) {
    for (const auto& card : newCards) {
        // The store may be at work for the batch; nobody waits for this line.
        onWorker([database = state_.database, name = Text::displayable(card.name())] {
            try {
                database->recordActivity(std::nullopt, "card_detected", name);
            } catch (const std::exception& failure) {
                AppLog::append("Activity not recorded: " + describe(failure));
            }
        });
        Q_EMIT cardAppeared(card.name());
    }
}

void VolumeFollower::toggle(VolumeSide side, const std::string& id) {
    if (!findVolume(state_.board.list(side), id))
        return;
    state_.dropRefusal();
    const bool isTicked = state_.board.selection(side).toggle(id);
    if (side == VolumeSide::Destination) {
        persistDestinations();
    } else if (isTicked) {
        state_.isVerdictOld = true;
        state_.cardUnits.clearUnit(id);
        state_.giveCurrentCrewTo(id);
        // It may have been shot on, or emptied, since it was looked at.
        measure({id});
    } else {
        state_.cardUnits.cardsNeedingUnit.erase(id);
    }
    state_.publish();
}

void VolumeFollower::focusCard(const std::string& id) {
    if (!findVolume(state_.board.list(VolumeSide::Card), id))
        return;
    state_.board.selection(VolumeSide::Card).focused = id;
    state_.publish();
}

void VolumeFollower::remove(VolumeSide side, const std::string& id) {
    const auto* listed = findVolume(state_.board.list(side), id);
    if (!listed)
        return;
    state_.dropRefusal();
    state_.board.remove(side, ClassifiedVolume(*listed));
    if (side == VolumeSide::Destination)
        persistDestinations();
    apply();
}

void VolumeFollower::clear(VolumeSide side) {
    state_.dropRefusal();
    state_.board.clear(side);
    if (side == VolumeSide::Destination) {
        awaitedFolders_.clear();
        persistDestinations();
    }
    apply();
}

void VolumeFollower::treatAs(VolumeSide side, const std::string& id) {
    state_.dropRefusal();
    state_.board.treatAs(side, id);
    // Not what is ticked, which a disk that is not there now may have been.
    DestinationMemory::saveWanted(state_.board.wantedDestIDs(), state_.defaults);
    apply();
}

void VolumeFollower::pickFolder(VolumeSide side) {
    if (!state_.surroundings.folderChooser)
        return;
    const auto l10n = state_.l10n();
    const auto message = side == VolumeSide::Card ? l10n.pickCardFolder() : l10n.pickDestFolder();
    state_.surroundings.folderChooser->choose(
        std::string(message), std::string(l10n.select()),
        [self = QPointer(this), side](std::optional<std::filesystem::path> folder) {
            if (self && folder)
                self->addFolder(side, *folder);
        });
}

QCoro::Task<> VolumeFollower::addFolder(VolumeSide side, std::filesystem::path folder) {
    const QPointer self(this);
    const auto looking =
        onWorker([look = FolderLook(state_.surroundings), place = PickedFolders::normalized(folder),
                  side] { return look.at(place, side); });
    const auto volume = co_await looking;
    if (self)
        self->useFolder(side, volume);
}

void VolumeFollower::useFolder(VolumeSide side, const ClassifiedVolume& folder) {
    const auto& place = folder.facts.mountPoint;
    state_.dropRefusal();
    state_.board.addPicked(side, folder);
    apply();
    if (const auto* listed = findPlace(state_.board.list(side), place)) {
        const auto id = listed->id();
        auto& selection = state_.board.selection(side);
        selection.tick(id);
        if (side == VolumeSide::Card) {
            selection.focused = id;
            state_.isVerdictOld = true;
            state_.cardUnits.clearUnit(id);
            state_.giveCurrentCrewTo(id);
        }
    } else if (state_.board.dropPicked(side, folder)) {
        // It is there: only a card keeps its place off the list. That need not be listed itself.
        const auto* card = findPlace(state_.board.list(VolumeSide::Card), place);
        state_.refuse(
            {Notice::Kind::CardAsDestination, folder.name(), card ? card->id() : std::string()});
    }
    if (side == VolumeSide::Destination)
        persistDestinations();
    persistPickedFolders();
    AppLog::append((side == VolumeSide::Card ? "Manuel kart: " : "Manuel hedef: ") +
                   place.native());
    state_.publish();
}

void VolumeFollower::persistDestinations() {
    DestinationMemory::save(state_.board.lastingDestIDs(), state_.defaults);
    DestinationMemory::saveWanted(state_.board.wantedDestIDs(), state_.defaults);
}

void VolumeFollower::persistPickedFolders() {
    pickedFolders_.persistIfNeeded(state_.board.corrections().extraCards,
                                   state_.board.corrections().extraDestinations, awaitedFolders_);
}

void VolumeFollower::refreshFreeSpace() {
    if (!state_.surroundings.measure)
        return;
    for (const auto& disk : state_.board.selected(VolumeSide::Destination)) {
        // One that is silent is not asked again before it has answered.
        if (askedForFreeSpace_.insert(disk.id()).second)
            refreshFreeSpaceOf(this,
                               {disk.id(), disk.facts.mountPoint, MeasuringEntry::What::UsedBytes});
    }
}

QCoro::Task<> VolumeFollower::refreshFreeSpaceOf(QPointer<VolumeFollower> self,
                                                 MeasuringEntry disk) {
    const auto asking =
        onWorker([disk, measure = self->state_.surroundings.measure] { return measure(disk, {}); });
    const auto measured = co_await asking;
    if (!self)
        co_return;
    self->askedForFreeSpace_.erase(disk.id);
    const bool isListed = findVolume(self->state_.board.list(VolumeSide::Destination), disk.id);
    // A full disk is not one that nobody knows.
    if (isListed && measured.totalBytes > 0 &&
        self->state_.contentSizes.setFreeBytes(disk.id, measured.freeBytes))
        self->state_.publish();
}

QCoro::Task<> VolumeFollower::lookUp(QPointer<VolumeFollower> self, ClassifiedVolume card) {
    const auto& state = self->state_;
    const auto bytes = state.contentSizes.usedBytes(card.id()).value_or(0);
    const auto looking =
        onWorker([card, bytes, database = state.database, names = state.settings.skipNames()] {
            return PastOffload::find(*database, card, bytes, names);
        });
    auto past = co_await looking;
    if (!self)
        co_return;
    const auto* listed = findVolume(self->state_.board.list(VolumeSide::Card), card.id());
    if (!listed || listed->facts.identity != card.facts.identity)
        co_return;
    if (past)
        self->state_.pastOffloads[card.id()] = std::move(*past);
    else
        self->state_.pastOffloads.erase(card.id());
    self->state_.publish();
}

void VolumeFollower::measureCardsAnew() {
    measure(idsOf(state_.board.list(VolumeSide::Card)));
}

void VolumeFollower::measure(const VolumeIDs& forceIDs) {
    if (!state_.surroundings.measure)
        return;
    auto job =
        state_.contentSizes.begin(state_.board.lists(), forceIDs, state_.settings.skipNames());
    if (!job)
        return;
    // Each by itself: one that is silent keeps back no other.
    for (const auto& entry : job->entries)
        measureOne(this, entry, job->skipNames, job->generation);
}

QCoro::Task<> VolumeFollower::measureOne(QPointer<VolumeFollower> self, MeasuringEntry entry,
                                         SkipNames skipNames, int generation) {
    const auto measuring =
        onWorker([entry, names = std::move(skipNames),
                  measure = self->state_.surroundings.measure] { return measure(entry, names); });
    const auto measured = co_await measuring;
    // A later job may measure it under other rules, or it may be gone.
    if (!self || !self->state_.contentSizes.accept(generation, entry.id, measured.usedBytes))
        co_return;
    self->state_.board.applyCapacity(entry.id, measured.totalBytes, measured.freeBytes);
    self->state_.publish();
    if (const auto* card = findVolume(self->state_.board.list(VolumeSide::Card), entry.id))
        lookUp(self, *card);
}

} // namespace slatewise
