#include "Batch/HeldFolders.h"

#include "Batch/Waiting.h"
#include "Platform/Disks/MountPoints.h"
#include "Platform/Error.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

namespace slatewise {

namespace {

using Folder = std::shared_ptr<const RootFolder>;

bool meansGone(const PosixError& failure) {
    constexpr std::array kCodes = {ENOENT, ENOTDIR,   ESTALE,   ENODEV,
                                   ENXIO,  ENOMEDIUM, ENOTCONN, ECONNABORTED};
    return std::find(kCodes.begin(), kCodes.end(), failure.code()) != kCodes.end();
}

/// Null when there is no folder, or another one than was chosen. Fails with `PosixError` when that
/// cannot be told.
Folder openIfChosen(const VolumeFacts& chosen) {
    try {
        auto folder = std::make_shared<const RootFolder>(chosen.mountPoint);
        const auto identity = folder->identity();
        if (!identity)
            throw PosixError("open", chosen.mountPoint, errno);
        if (!chosen.identity || identity->isSame(*chosen.identity))
            return folder;
        AppLog::append("Not the folder that was chosen: " + chosen.mountPoint.native());
    } catch (const PosixError& failure) {
        AppLog::append(describe(failure));
        if (!meansGone(failure))
            throw;
    }
    return nullptr;
}

QCoro::Task<> allOf(std::vector<QCoro::Task<>> tasks) {
    for (const auto& task : tasks)
        co_await task;
}

} // namespace

/// Filled by workers, some of which may come too late.
struct HeldFolders::Look {
    std::mutex lock;
    HeldFolders held;
    bool isTaken = false;

    void open(const VolumeFacts& chosen, bool isDestination) {
        Folder folder;
        std::optional<PosixError> failure;
        const bool isBareOne = isDestination && MountPoints::isBare(chosen.mountPoint);
        try {
            folder = openIfChosen(chosen);
        } catch (const PosixError& reason) {
            failure = reason;
        } catch (const std::exception& reason) {
            AppLog::append(describe(reason));
        }
        const std::lock_guard guard(lock);
        // A disk that answers too late is held by nobody.
        if (isTaken)
            return;
        held.folders_[chosen.mountPoint] = std::move(folder);
        if (failure)
            held.failures_.insert({chosen.mountPoint, *failure});
        if (isBareOne)
            held.bare_.insert(chosen.mountPoint);
    }

    /// A late worker keeps this object, but must not keep a card from being ejected.
    HeldFolders takeSoFar() {
        const std::lock_guard guard(lock);
        isTaken = true;
        return std::exchange(held, {});
    }
};

QCoro::Task<HeldFolders> HeldFolders::of(BatchPlan plan, std::stop_token stop,
                                         std::chrono::milliseconds patience) {
    const auto look = std::make_shared<Look>();
    std::vector<QCoro::Task<>> answers;
    for (const auto* volumes : {&plan.cards, &plan.destinations}) {
        const bool areDestinations = volumes == &plan.destinations;
        for (const auto& volume : *volumes) {
            answers.push_back(onWorker([look, facts = volume.facts, areDestinations] {
                look->open(facts, areDestinations);
            }));
        }
    }
    const auto answering = waitForEnd(allOf(std::move(answers)), stop, {.patience = patience});
    co_await answering;
    co_return look->takeSoFar();
}

BatchPlan HeldFolders::heldPart(BatchPlan plan) const {
    const auto isMissing = [this](const ClassifiedVolume& volume) {
        return !at(volume.facts.mountPoint);
    };
    std::erase_if(plan.cards, isMissing);
    std::erase_if(plan.destinations, isMissing);
    return plan;
}

std::vector<Folder> HeldFolders::disksOf(const BatchPlan& plan) const {
    std::vector<Folder> disks;
    for (const auto& destination : plan.destinations) {
        if (auto disk = at(destination.facts.mountPoint))
            disks.push_back(std::move(disk));
    }
    return disks;
}

std::optional<OffloadProblem> HeldFolders::findMissing(const BatchPair& pair) const {
    using Kind = OffloadProblem::Kind;
    for (const auto* volume : {&pair.card, &pair.destination}) {
        const auto failure = failures_.find(volume->facts.mountPoint);
        if (failure != failures_.end())
            return OffloadProblem::of(Kind::NotOpened, volume->name(), failure->second);
    }
    if (!at(pair.card.facts.mountPoint)) {
        const bool isSilent = !folders_.contains(pair.card.facts.mountPoint);
        return OffloadProblem{isSilent ? Kind::CardSilent : Kind::CardGone, pair.card.name()};
    }
    if (!at(pair.destination.facts.mountPoint)) {
        const bool isSilent = !folders_.contains(pair.destination.facts.mountPoint);
        return OffloadProblem{isSilent ? Kind::DiskSilent : Kind::DiskReplaced,
                              pair.destination.name()};
    }
    return std::nullopt;
}

std::optional<OffloadProblem> HeldFolders::findNotMounted(const BatchPair& pair) const {
    const auto& mountPoint = pair.destination.facts.mountPoint;
    if (!bare_.contains(mountPoint))
        return std::nullopt;
    return OffloadProblem{OffloadProblem::Kind::NotMounted, mountPoint.native()};
}

std::shared_ptr<const RootFolder> HeldFolders::at(const std::filesystem::path& mountPoint) const {
    const auto found = folders_.find(mountPoint);
    return found == folders_.end() ? nullptr : found->second;
}

std::shared_ptr<const RootFolder> HeldFolders::release(const std::filesystem::path& mountPoint) {
    return std::exchange(folders_[mountPoint], nullptr);
}

} // namespace slatewise
