#include "Offload/CopyEngine.h"

#include "Offload/CardInventory.h"
#include "Offload/CopyProgress.h"
#include "Offload/CopyProof.h"
#include "Offload/FolderTemplate.h"
#include "Offload/MediaProbe.h"
#include "Offload/OffloadError.h"
#include "Offload/RunReporter.h"
#include "Offload/RunTransfer.h"
#include "Offload/SHA256Hasher.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"

#include <fcntl.h>

#include <optional>
#include <unordered_set>

namespace slatewise::CopyEngine {

namespace {

using Kind = OffloadProblem::Kind;

/// The working state of one run.
class Run {
public:
    Run(const Request& request, const Observer& observer, std::stop_token stop)
        : request_(request), observer_(observer), reporter_(observer),
          transfer_(reporter_, std::move(stop)),
          card_(folderOf(request.cardFolder, request.card,
                         OffloadError::CardGone{request.card.name()})),
          destination_(folderOf(request.destinationFolder, request.destination,
                                OffloadError::DiskReplaced{request.destination.name()})) {}

    OffloadOutcome perform() {
        reporter_.publish(Phase::Scanning());
        nameSession();
        transfer_.throwIfCancelled();
        requireFolders();
        inventory_.emplace(*card_, request_.settings.skipNames(), reporter_, transfer_.stop());
        if (request_.planFormats)
            transfer_.computeFurther(
                request_.planFormats(*card_, inventory_->entries(), transfer_.stop()));
        if (request_.settings.verifyOnly)
            return hashSource();
        requireSpace();
        transfer_.throwIfCancelled();
        createSessionRoot();
        return copyAndVerify();
    }

private:
    // Before anything is written

    /// What nobody has opened yet is opened now. What cannot be is gone.
    static std::shared_ptr<const RootFolder> folderOf(std::shared_ptr<const RootFolder> opened,
                                                      const ClassifiedVolume& volume,
                                                      OffloadError::Reason whenGone) {
        if (opened)
            return opened;
        try {
            return std::make_shared<const RootFolder>(volume.facts.mountPoint);
        } catch (const PosixError&) {
            throw OffloadError(std::move(whenGone));
        }
    }

    void nameSession() {
        const auto wanted = FolderTemplate::sessionRoot(request_.settings,
                                                        {.destination = destination_->path(),
                                                         .cardName = request_.card.facts.volumeName,
                                                         .camera = request_.camera,
                                                         .ekip = request_.ekip,
                                                         .project = {},
                                                         .now = request_.now});
        const auto below = FolderTemplate::belowDestination(wanted, destination_->path());
        if (!below)
            throw OffloadError(OffloadError::TemplateLeadsOut{request_.settings.folderTemplate});
        session_ = FolderTemplate::uniqueExisting(*below, *destination_);
        sessionRoot_ = destination_->path() / session_;
    }

    /// What lies under the two paths now is what is meant, or nothing is done with it.
    void requireFolders() const {
        if (!card_->isStillAtItsPath())
            throw OffloadError(OffloadError::CardGone{request_.card.name()});
        if (!destination_->isStillAtItsPath())
            throw OffloadError(OffloadError::DiskReplaced{request_.destination.name()});
    }

    /// As `requireFolders`, once there is something to tell of.
    bool findsFoldersInPlace() {
        const bool isCardThere = card_->isStillAtItsPath();
        const bool isDiskThere = destination_->isStillAtItsPath();
        if (!isCardThere)
            reporter_.report({Kind::CardGone, request_.card.name()});
        if (!isDiskThere)
            reporter_.report({Kind::DiskReplaced, request_.destination.name()});
        return isCardThere && isDiskThere;
    }

    void requireSpace() const {
        const auto free = destination_->capacity().free;
        const auto total = inventory_->totalBytes();
        if (total < 1 || free < 1)
            return;
        const auto needed = total + spaceMargin(total);
        if (free < needed)
            throw OffloadError(
                OffloadError::InsufficientSpace{needed, free, request_.destination.name()});
    }

    /// The walk may have taken a while: a folder that came into being meanwhile is not ours, so the
    /// session's folder must be one that this run made.
    void createSessionRoot() {
        requireFolders();
        destination_->createFolders(session_.parent_path());
        // Whoever else makes folders there will let us have one in the end; a disk that is broken
        // may say for ever that they are there.
        constexpr int kAttempts = 100;
        for (int attempt = 1; !destination_->createNewFolder(session_); ++attempt) {
            if (attempt == kAttempts)
                throw PosixError("mkdir", sessionRoot_, EEXIST);
            nameSession();
        }
        proof_.emplace(*destination_, session_, reporter_, transfer_);
        if (observer_.sessionRootCreated)
            observer_.sessionRootCreated(sessionRoot_);
    }

    // Hashing only

    OffloadOutcome hashSource() {
        CopyProgress progress(static_cast<int>(inventory_->copyList().size()),
                              inventory_->totalBytes());
        int index = 0;
        for (const auto& entry : inventory_->entries()) {
            if (entry.isDirectory)
                continue;
            transfer_.throwIfCancelled();
            if (!entry.shouldCopy) {
                results_.push_back(makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
                continue;
            }
            try {
                hashFile(entry, index++, progress);
            } catch (const CancellationError&) {
                throw;
            } catch (const std::exception& failure) {
                return stopAt(Kind::HashingStopped, entry, failure, 0);
            }
        }
        const bool areInPlace = lookIntoClips(*card_, RootFolder::Links::FollowBeneath);
        return outcome(isCardUnchanged(areInPlace) ? OutcomeStatus::Hashed : OutcomeStatus::Failed,
                       0);
    }

    void hashFile(const InventoryEntry& entry, int index, CopyProgress& progress) {
        const auto publishFigures = [&] {
            reporter_.publish(
                progress.hashing(entry.relativePath, index, SpeedMeter::Time::clock::now()));
        };
        publishFigures();
        auto digests = SHA256Hasher::hashFile(
            transfer_.transfer(), onCard(entry.relativePath), watch(entry, [&](std::size_t count) {
                progress.add(static_cast<std::int64_t>(count), SpeedMeter::Time::clock::now());
                publishFigures();
            }));
        addRead(makeRow(entry, RowAction::Hash, VerifyStatus::Hashed), std::move(digests));
    }

    // Copying

    OffloadOutcome copyAndVerify() {
        const auto& copyList = inventory_->copyList();
        CopyProgress progress(static_cast<int>(copyList.size()), inventory_->totalBytes());
        for (std::size_t index = 0; index < copyList.size(); ++index) {
            transfer_.throwIfCancelled();
            const auto& entry = *copyList[index];
            try {
                copyFile(index, progress);
            } catch (const std::exception& failure) {
                return stopAt(Kind::CopyStopped, entry, failure, progress.bytesDone());
            }
        }
        for (const auto& entry : inventory_->entries()) {
            if (!entry.isDirectory && !entry.shouldCopy)
                results_.push_back(makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
        }
        return outcome(isProved() ? OutcomeStatus::Verified : OutcomeStatus::Failed,
                       progress.bytesDone());
    }

    /// Everything behind the last copy.
    bool isProved() {
        if (!proof_->settle() || !findsFoldersInPlace())
            return false;
        proof_->dropDeviceCache();
        const bool allProved = proof_->prove(results_);
        bool areInPlace = findsFoldersInPlace();
        if (areInPlace)
            areInPlace = lookIntoClips(proof_->copies()->folder(), RootFolder::Links::Refuse);
        const bool areComplete = areInPlace && proof_->findsCopiesInPlace(results_);
        // Folders that fell together bear one name, which is told.
        const bool areNamed = areComplete && areFoldersApart_ && proof_->findsNamesKept(results_);
        const bool isUnchanged = isCardUnchanged(areInPlace);
        const bool isUndamaged = proof_->findsDiskUndamaged();
        if (observer_.proved)
            observer_.proved(proof_->copies());
        return allProved && areNamed && isUnchanged && isUndamaged;
    }

    void copyFile(std::size_t index, CopyProgress& progress) {
        const auto& copyList = inventory_->copyList();
        const auto& entry = *copyList[index];
        const auto publishFigures = [&] {
            reporter_.publish(progress.copying(entry.relativePath, static_cast<int>(index),
                                               SpeedMeter::Time::clock::now()));
        };
        publishFigures();
        makeFoldersTo(entry.relativePath);
        std::optional<FileBeneath> next;
        if (index + 1 < copyList.size())
            next.emplace(onCard(copyList[index + 1]->relativePath));
        auto copied =
            SHA256Hasher::copyAndHash(transfer_.transfer(), onCard(entry.relativePath),
                                      {*destination_, session_ / entry.relativePath},
                                      watch(entry,
                                            [&](std::size_t count) {
                                                progress.add(static_cast<std::int64_t>(count),
                                                             SpeedMeter::Time::clock::now());
                                                publishFigures();
                                            }),
                                      next);
        auto row = makeRow(entry, RowAction::Copy, VerifyStatus::CopiedUnverified);
        row.sizeBytes = copied.bytes;
        addRead(std::move(row), std::move(copied.digests));
    }

    /// Each folder is made once, by this run. One that is there before that is another folder of
    /// the card whose name the disk takes for the same, as where case means nothing: what is listed
    /// later would not be what the card holds. Of files that is seen when they are made.
    void makeFoldersTo(const std::string& file) {
        std::filesystem::path folder;
        for (const auto& part : std::filesystem::path(file).parent_path()) {
            folder /= part;
            if (!foldersMade_.insert(folder.native()).second ||
                destination_->createNewFolder(session_ / folder))
                continue;
            // Anything but a folder stops the copy.
            (void)destination_->open(session_ / folder, O_PATH | O_DIRECTORY);
            reporter_.report({Kind::FoldersFellTogether, folder.native()});
            areFoldersApart_ = false;
        }
    }

    OffloadOutcome stopAt(Kind kind, const InventoryEntry& entry, const std::exception& failure,
                          std::int64_t bytesCopied) {
        // Of a copy the reason names the disk: it says that this failed and not the card.
        const auto* ofSystem = dynamic_cast<const PosixError*>(&failure);
        const auto copy = sessionRoot_ / entry.relativePath;
        if (ofSystem && ofSystem->subject() == Text::legible(copy.native()))
            reporter_.reportFailure(kind, entry.relativePath,
                                    PosixError("copy", destination_->path(), ofSystem->code()));
        else
            reporter_.reportFailure(kind, entry.relativePath, failure,
                                    card_->path() / entry.relativePath);
        results_.push_back(makeRow(entry, RowAction::Fail, VerifyStatus::Failed));
        appendSkippedRemainder();
        return outcome(OutcomeStatus::Failed, bytesCopied);
    }

    /// Gives every file of the inventory that has no row yet the one it deserves.
    void appendSkippedRemainder() {
        std::unordered_set<std::string> done;
        for (const auto& row : results_)
            done.insert(row.relativePath);
        for (const auto& entry : inventory_->entries()) {
            if (entry.isDirectory || done.contains(entry.relativePath))
                continue;
            results_.push_back(entry.shouldCopy
                                   ? makeRow(entry, RowAction::Fail, VerifyStatus::Failed)
                                   : makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
        }
    }

    // Around all of it

    FileBeneath onCard(const std::string& relative) const {
        return {*card_, relative, RootFolder::Links::FollowBeneath};
    }

    /// For the one pass over that file on the card.
    TransferWatch watch(const InventoryEntry& entry, std::function<void(std::size_t)> onBytes) {
        auto watch = transfer_.watch(entry.relativePath, std::move(onBytes));
        watch.onOpened = [&](const FileSystem::Attributes& file) {
            inventory_->noteOpened(entry, file);
        };
        return watch;
    }

    void addRead(FileCopyResult row, FileDigests digests) {
        row.sourceSHA256 = std::move(digests.sha256);
        row.further = FurtherHashes{std::move(digests.further), {}, {}};
        results_.push_back(std::move(row));
    }

    /// Reads through the system's cache, and so only after the last proof. Takes long: what is
    /// looked at last of all is looked at afterwards. Gives whether both folders are in place then.
    bool lookIntoClips(const RootFolder& root, RootFolder::Links links) {
        MediaProbe::attachMediaMetadata(
            results_,
            [&](const std::string& relative) {
                return FileBeneath{root, relative, links};
            },
            {.tool = request_.mediaInfo,
             .log = [this](const std::string& line) { reporter_.log(line); },
             .stop = transfer_.stop()});
        return findsFoldersInPlace();
    }

    /// Nothing is looked for on a card that is gone.
    bool isCardUnchanged(bool isInPlace) {
        return isInPlace && inventory_->findsCardUnchanged(results_) && inventory_->isWhole();
    }

    OffloadOutcome outcome(OutcomeStatus status, std::int64_t bytesCopied) {
        return {.sessionID = request_.sessionID,
                .sessionRoot = sessionRoot_,
                .status = status,
                .isHashOnly = request_.settings.verifyOnly,
                .problems = reporter_.takeProblems(),
                .files = std::move(results_),
                .bytesCopied = bytesCopied,
                .startedAt = request_.now,
                .finishedAt = Clock::now()};
    }

    const Request& request_;
    const Observer& observer_;
    RunReporter reporter_;
    RunTransfer transfer_;
    const std::shared_ptr<const RootFolder> card_;
    const std::shared_ptr<const RootFolder> destination_;
    /// Relative to the destination.
    std::filesystem::path session_;
    std::filesystem::path sessionRoot_;
    std::optional<CardInventory> inventory_;
    std::unordered_set<std::string> foldersMade_;
    bool areFoldersApart_ = true;
    std::optional<CopyProof> proof_;
    std::vector<FileCopyResult> results_;
};

} // namespace

OffloadOutcome run(const Request& request, const Observer& observer, std::stop_token stop) {
    return Run(request, observer, std::move(stop)).perform();
}

std::int64_t spaceMargin(std::int64_t totalBytes) {
    constexpr std::int64_t kLeastMarginBytes = 8'388'608;
    constexpr std::int64_t kOnePercentFromBytes = 838'860'800;
    return totalBytes >= kOnePercentFromBytes ? totalBytes / 100 : kLeastMarginBytes;
}

} // namespace slatewise::CopyEngine
