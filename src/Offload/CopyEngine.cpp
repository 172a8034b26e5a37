#include "Offload/CopyEngine.h"

#include "Offload/CopyProgress.h"
#include "Offload/FinalLook.h"
#include "Offload/FolderTemplate.h"
#include "Offload/MediaProbe.h"
#include "Offload/OffloadError.h"
#include "Offload/ProvedCopies.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/TreeWalker.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"

#include <fcntl.h>

#include <cerrno>
#include <set>
#include <unordered_set>

namespace slatewise::CopyEngine {

namespace {

using Kind = OffloadProblem::Kind;

FileCopyResult makeRow(const InventoryEntry& entry, RowAction action, VerifyStatus verifyStatus) {
    FileCopyResult row;
    row.relativePath = entry.relativePath;
    row.sizeBytes = entry.sizeBytes;
    row.mtime = entry.mtime;
    row.created = entry.created;
    row.action = action;
    row.verifyStatus = verifyStatus;
    return row;
}

bool isSkippedFile(const InventoryEntry& entry) {
    return !entry.isDirectory && !entry.shouldCopy;
}

/// The working state of one run.
class Run {
public:
    Run(const Request& request, const Observer& observer, std::stop_token stop)
        : request_(request), observer_(observer), stop_(std::move(stop)),
          card_(folderOf(request.cardFolder, request.card,
                         OffloadError::CardGone{request.card.name()})),
          destination_(folderOf(request.destinationFolder, request.destination,
                                OffloadError::DiskReplaced{request.destination.name()})) {}

    OffloadOutcome perform() {
        publish(Phase::Scanning());
        nameSession();
        throwIfCancelled();
        requireFolders();
        takeInventory();
        if (request_.settings.verifyOnly)
            return hashSource();
        requireSpace();
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
        session_ = FolderTemplate::uniqueExisting(
            *below, [this](const auto& path) { return destination_->exists(path); });
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
            reportProblem({Kind::CardGone, request_.card.name()});
        if (!isDiskThere)
            reportProblem({Kind::DiskReplaced, request_.destination.name()});
        return isCardThere && isDiskThere;
    }

    void takeInventory() {
        entries_ =
            TreeWalker::walk(*card_, request_.settings.skipNames(), {},
                             {.unreadable = [this](const std::string& folder,
                                                   int code) { noteUnreadable(folder, code); },
                              .leadsOut =
                                  [this](const std::string& link) {
                                      reportProblem({Kind::LinkLeadsOut, link});
                                  },
                              .leadsNowhere =
                                  [this](const std::string& link) {
                                      reportProblem({Kind::LinkLeadsNowhere, link});
                                  }});
        for (const auto& entry : entries_) {
            if (!entry.shouldCopy)
                continue;
            copyList_.push_back(&entry);
            totalBytes_ += entry.sizeBytes;
        }
        if (request_.planFormats)
            formatsOf_ = request_.planFormats(*card_, entries_);
    }

    /// Everything else is still copied and proved; only the word for all of it is lost.
    void noteUnreadable(const std::string& folder, int code) {
        foldersNotRead_.insert(folder);
        const auto reason = reasonOf(code, words_);
        if (code == EACCES && TreeWalker::isRepairFolder(*card_, folder)) {
            reportProblem({Kind::LostAndFoundNotRead, folder, reason});
            return;
        }
        isWholeCardRead_ = false;
        reportProblem({Kind::FolderNotRead, folder, reason});
    }

    void requireSpace() const {
        const auto free = destination_->capacity().free;
        if (totalBytes_ < 1 || free < 1)
            return;
        const auto needed = totalBytes_ + spaceMargin(totalBytes_);
        if (free < needed)
            throw OffloadError(OffloadError::InsufficientSpace{needed, free});
    }

    /// The walk may have taken a while: a folder that came into being meanwhile is not ours, so the
    /// session's folder must be one that this run made.
    void createSessionRoot() {
        requireFolders();
        destination_->createFolders(session_.parent_path());
        while (!destination_->createNewFolder(session_))
            nameSession();
        copies_ = std::make_shared<ProvedCopies>(destination_->below(session_));
        if (observer_.sessionRootCreated)
            observer_.sessionRootCreated(sessionRoot_);
    }

    // Hashing only

    OffloadOutcome hashSource() {
        for (const auto& entry : entries_) {
            if (entry.isDirectory)
                continue;
            throwIfCancelled();
            if (!entry.shouldCopy) {
                results_.push_back(makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
                continue;
            }
            auto row = makeRow(entry, RowAction::Hash, VerifyStatus::Hashed);
            auto digests = SHA256Hasher::hashFile(transfer_, onCard(entry.relativePath),
                                                  watch(entry.relativePath, {}));
            row.sourceSHA256 = std::move(digests.sha256);
            row.further = FurtherHashes{std::move(digests.further), {}, {}};
            results_.push_back(std::move(row));
        }
        lookIntoClips(card_->path());
        if (!findsFoldersInPlace())
            return outcome(OutcomeStatus::Failed, 0);
        const bool isUnchanged = findsCardUnchanged();
        return outcome(
            isUnchanged && isWholeCardRead_ ? OutcomeStatus::Hashed : OutcomeStatus::Failed, 0);
    }

    // Copying

    OffloadOutcome copyAndVerify() {
        CopyProgress progress(static_cast<int>(copyList_.size()), totalBytes_);
        for (std::size_t index = 0; index < copyList_.size(); ++index) {
            throwIfCancelled();
            const auto& entry = *copyList_[index];
            try {
                copyFile(entry, static_cast<int>(index), progress);
            } catch (const std::exception& failure) {
                return stopAt(entry, failure, progress);
            }
        }
        for (const auto& entry : entries_) {
            if (isSkippedFile(entry))
                results_.push_back(makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
        }
        if (!settleOnDevice())
            return outcome(OutcomeStatus::Failed, progress.bytesDone());
        const bool allProved = verifyCopies();
        noteWhatMemoryKept();
        // It takes long, and what is looked at afterwards shall be as late as can be.
        bool areInPlace = findsFoldersInPlace();
        if (areInPlace) {
            lookIntoClips(sessionRoot_);
            areInPlace = findsFoldersInPlace();
        }
        const bool areComplete = areInPlace && findsCopiesInPlace();
        const bool isUnchanged = areInPlace && findsCardUnchanged();
        if (observer_.proved)
            observer_.proved(copies_);
        const bool isWell =
            allProved && areFoldersApart_ && areComplete && isUnchanged && isWholeCardRead_;
        return outcome(isWell ? OutcomeStatus::Verified : OutcomeStatus::Failed,
                       progress.bytesDone());
    }

    /// What is proved must also outlive a power cut, folder entries and dates included, and the
    /// proof must come from the device. False when the disk could not keep what it was given.
    bool settleOnDevice() {
        try {
            destination_->syncVolume();
        } catch (const PosixError& failure) {
            reportProblem(
                {Kind::NothingReadBack, destination_->path().native(), describe(failure, words_)});
            return false;
        }
        if (!findsFoldersInPlace())
            return false;
        isDeviceDropped_ =
            DeviceCache::drop(destination_->path()) != DeviceCache::Drop::NotPossible;
        if (!isDeviceDropped_)
            reportProblem({Kind::ReadFromMemory, destination_->path().native()});
        return true;
    }

    /// A few files by their names; where it is more, it is the disk.
    void noteWhatMemoryKept() {
        constexpr std::size_t kFew = 3;
        if (!isDeviceDropped_ || keptInMemory_.empty())
            return;
        if (keptInMemory_.size() > kFew)
            keptInMemory_ = {destination_->path().native()};
        for (auto& subject : keptInMemory_)
            reportProblem({Kind::ReadFromMemory, std::move(subject)});
    }

    void copyFile(const InventoryEntry& entry, int index, CopyProgress& progress) {
        const auto publishFigures = [&] {
            publish(progress.copying(entry.relativePath, index, SpeedMeter::Time::clock::now()));
        };
        publishFigures();
        makeFoldersTo(entry.relativePath);
        auto copied = SHA256Hasher::copyAndHash(
            transfer_, onCard(entry.relativePath), inSession(entry.relativePath),
            watch(entry.relativePath, [&](std::size_t count) {
                progress.addCopied(static_cast<std::int64_t>(count),
                                   SpeedMeter::Time::clock::now());
                publishFigures();
            }));
        auto row = makeRow(entry, RowAction::Copy, VerifyStatus::CopiedUnverified);
        row.sizeBytes = copied.bytes;
        row.sourceSHA256 = std::move(copied.digests.sha256);
        row.further = FurtherHashes{std::move(copied.digests.further), {}, {}};
        results_.push_back(std::move(row));
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
            reportProblem({Kind::FoldersFellTogether, folder.native()});
            areFoldersApart_ = false;
        }
    }

    OffloadOutcome stopAt(const InventoryEntry& entry, const std::exception& failure,
                          const CopyProgress& progress) {
        reportFailure(Kind::CopyStopped, entry.relativePath, failure);
        results_.push_back(makeRow(entry, RowAction::Fail, VerifyStatus::Failed));
        appendSkippedRemainder();
        return outcome(OutcomeStatus::Failed, progress.bytesDone());
    }

    /// Gives every file of the inventory that has no row yet the one it deserves.
    void appendSkippedRemainder() {
        std::unordered_set<std::string> done;
        for (const auto& row : results_)
            done.insert(row.relativePath);
        for (const auto& entry : entries_) {
            if (entry.isDirectory || done.contains(entry.relativePath))
                continue;
            results_.push_back(entry.shouldCopy
                                   ? makeRow(entry, RowAction::Fail, VerifyStatus::Failed)
                                   : makeRow(entry, RowAction::Skip, VerifyStatus::Skipped));
        }
    }

    // Proving

    /// Gives whether every copy was proved.
    bool verifyCopies() {
        std::vector<FileCopyResult*> copies;
        for (auto& row : results_) {
            if (row.action == RowAction::Copy)
                copies.push_back(&row);
        }
        bool allProved = true;
        const int count = static_cast<int>(copies.size());
        for (int position = 0; position < count; ++position) {
            throwIfCancelled();
            auto& row = *copies[static_cast<std::size_t>(position)];
            try {
                readBack(row, position, count);
            } catch (const std::exception& failure) {
                reportFailure(Kind::NotReadBack, row.relativePath, failure);
                markFailed(row, VerifyStatus::Failed);
            }
            allProved = allProved && row.verifyStatus == VerifyStatus::Verified;
        }
        return allProved;
    }

    void readBack(FileCopyResult& row, int position, int count) {
        const auto target = inSession(row.relativePath);
        copies_->note(static_cast<std::size_t>(&row - results_.data()), row.relativePath);
        const std::int64_t size = row.sizeBytes;
        std::int64_t bytesRead = 0;
        const auto publishFigures = [&] {
            publish(CopyProgress::verifying(row.relativePath, position, count, bytesRead, size));
        };
        publishFigures();
        auto proof = Verifier::readDestination(transfer_, target,
                                               watch(row.relativePath, [&](std::size_t bytes) {
                                                   bytesRead += static_cast<std::int64_t>(bytes);
                                                   publishFigures();
                                               }));
        if (proof.mayComeFromMemory)
            keptInMemory_.push_back(row.relativePath);
        row.destSHA256 = std::move(proof.digests.sha256);
        auto& further = proof.digests.further;
        const bool isProved = Verifier::matches(row.sourceSHA256.value_or(""), *row.destSHA256) &&
                              further == row.further->source;
        if (!further.empty())
            row.further.edit().hashedAt = Clock::now();
        if (isProved) {
            row.verifyStatus = VerifyStatus::Verified;
            return;
        }
        if (!further.empty())
            row.further.edit().readBack = std::move(further);
        reportProblem(
            {Kind::CopyDiffers, row.relativePath,
             "source " + row.sourceSHA256.value_or("") + " destination " + *row.destSHA256});
        markFailed(row, VerifyStatus::Mismatch);
    }

    /// Whether every copy lies where it was written: a proof says nothing of what became of it.
    bool findsCopiesInPlace() {
        auto changes = copies_->findChanged(results_);
        for (auto& problem : changes)
            reportProblem(std::move(problem));
        return changes.empty();
    }

    /// Whether what was read is what lies on the card.
    bool findsCardUnchanged() {
        FinalLook::CardChanges changes;
        try {
            changes = FinalLook::findChanges(*card_, entries_, request_.settings.skipNames(),
                                             [this](const std::string& folder, int code) {
                                                 if (!foldersNotRead_.contains(folder))
                                                     noteUnreadable(folder, code);
                                             });
        } catch (const PosixError& failure) {
            reportFailure(Kind::FolderNotRead, card_->path(), failure);
            return false;
        }
        for (auto& row : results_) {
            if (changes.files.contains(row.relativePath))
                markFailed(row, VerifyStatus::Failed);
        }
        for (const auto& file : changes.files)
            reportProblem({Kind::CardChanged, file});
        for (const auto& entry : changes.newcomers) {
            reportProblem({Kind::CameMeanwhile, entry.relativePath});
            results_.push_back(makeRow(entry, RowAction::Fail, VerifyStatus::Failed));
        }
        return changes.isEmpty();
    }

    // Around all of it

    /// Reads through the system's cache, and so only after the last proof.
    void lookIntoClips(const std::filesystem::path& root) {
        MediaProbe::attachMediaMetadata(results_, root,
                                        {.tool = request_.mediaInfo,
                                         .log = [this](const std::string& line) { log(line); },
                                         .stop = stop_});
    }

    OffloadOutcome outcome(OutcomeStatus status, std::int64_t bytesCopied) {
        return {.sessionID = request_.sessionID,
                .sessionRoot = sessionRoot_,
                .status = status,
                .problems = std::move(problems_),
                .files = std::move(results_),
                .bytesCopied = bytesCopied,
                .startedAt = request_.now,
                .finishedAt = Clock::now()};
    }

    TransferWatch watch(const std::string& relative, std::function<void(std::size_t)> onBytes) {
        return {
            .onBytes = std::move(onBytes),
            .onAccess = [this](const auto& file, FileAccess access) { noteAccess(file, access); },
            .stop = stop_,
            .furtherFormats = formatsOf_ ? formatsOf_(relative) : std::vector<HashFormat>()};
    }

    /// One log line for each way that files of a volume went.
    void noteAccess(const FileBeneath& file, FileAccess access) {
        if (!accessesSeen_.insert({&file.folder, access}).second)
            return;
        log(Text::displayable(file.folder.path().native()) +
            (access == FileAccess::Direct ? ": direct I/O"
                                          : ": cached I/O, dropped from the cache"));
    }

    FileBeneath onCard(const std::string& relative) const {
        return {*card_, relative, RootFolder::Links::FollowBeneath};
    }

    FileBeneath inSession(const std::string& relative) const {
        return {*destination_, session_ / relative};
    }

    void publish(const OffloadPhase& phase) const {
        if (observer_.progress)
            observer_.progress(phase);
    }

    void log(const std::string& line) const {
        if (observer_.log)
            observer_.log(line);
    }

    void reportProblem(OffloadProblem problem) {
        log(problem.text(L10n(AppLanguage::English)) +
            (problem.kind == Kind::CopyDiffers ? " " + problem.reason : ""));
        if (observer_.problem)
            observer_.problem(problem);
        problems_.push_back(std::move(problem));
    }

    /// Whoever asked a run to stop need not be told that it did.
    void reportFailure(OffloadProblem::Kind kind, const std::string& file,
                       const std::exception& failure) {
        if (dynamic_cast<const CancellationError*>(&failure))
            log("Stopped at " + Text::displayable(file));
        else
            reportProblem({kind, file, describe(failure, words_)});
    }

    void throwIfCancelled() const {
        if (stop_.stop_requested())
            throw CancellationError();
    }

    const Request& request_;
    const Observer& observer_;
    const std::stop_token stop_;
    /// Of the reasons in the problems.
    const L10n words_{request_.language};
    const std::shared_ptr<const RootFolder> card_;
    const std::shared_ptr<const RootFolder> destination_;
    /// Relative to the destination.
    std::filesystem::path session_;
    std::filesystem::path sessionRoot_;
    std::shared_ptr<ProvedCopies> copies_;
    bool isWholeCardRead_ = true;
    std::set<std::string> foldersNotRead_;
    std::unordered_set<std::string> foldersMade_;
    bool areFoldersApart_ = true;
    bool isDeviceDropped_ = true;
    /// Copies whose proof may not come from the disk.
    std::vector<std::string> keptInMemory_;
    std::vector<InventoryEntry> entries_;
    /// Into `entries_`, in its order.
    std::vector<const InventoryEntry*> copyList_;
    std::int64_t totalBytes_ = 0;
    Request::FormatsOf formatsOf_;
    std::vector<FileCopyResult> results_;
    std::vector<OffloadProblem> problems_;
    Transfer transfer_;
    std::set<std::pair<const RootFolder*, FileAccess>> accessesSeen_;
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
