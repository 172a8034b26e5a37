#include "Offload/CopyEngine.h"

#include "Offload/CopyProgress.h"
#include "Offload/FolderTemplate.h"
#include "Offload/MediaProbe.h"
#include "Offload/OffloadError.h"
#include "Offload/PathSize.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/TreeWalker.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <cerrno>
#include <set>
#include <system_error>
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

void markFailed(FileCopyResult& row, VerifyStatus verifyStatus) {
    row.action = RowAction::Fail;
    row.verifyStatus = verifyStatus;
}

/// The working state of one run.
class Run {
public:
    Run(const Request& request, const Observer& observer, std::stop_token stop)
        : request_(request), observer_(observer), stop_(std::move(stop)),
          cardRoot_(request.card.facts.mountPoint),
          destinationRoot_(request.destination.facts.mountPoint) {}

    OffloadOutcome perform() {
        publish(Phase::Scanning());
        sessionRoot_ = FolderTemplate::uniqueExisting(wantedSessionRoot());
        throwIfCancelled();
        takeInventory();
        if (request_.settings.verifyOnly)
            return hashSource();
        requireSpace();
        createSessionRoot();
        return copyAndVerify();
    }

private:
    // Before anything is written

    std::filesystem::path wantedSessionRoot() const {
        return FolderTemplate::sessionRoot(request_.settings,
                                           {.destination = destinationRoot_,
                                            .cardName = request_.card.facts.volumeName,
                                            .camera = request_.camera,
                                            .ekip = request_.ekip,
                                            .project = {},
                                            .now = request_.now});
    }

    void takeInventory() {
        entries_ = TreeWalker::walk(cardRoot_, request_.settings.skipNames(), {},
                                    [this](const std::filesystem::path& folder, int code) {
                                        reportProblem({Kind::FolderNotRead, folder.native(),
                                                       std::generic_category().message(code)});
                                    });
        for (const auto& entry : entries_) {
            if (!entry.shouldCopy)
                continue;
            copyList_.push_back(&entry);
            totalBytes_ += entry.sizeBytes;
        }
    }

    void requireSpace() const {
        const auto free = PathSize::volumeBytes(destinationRoot_).free;
        if (totalBytes_ < 1 || free < 1)
            return;
        const auto needed = totalBytes_ + spaceMargin(totalBytes_);
        if (free < needed)
            throw OffloadError(OffloadError::InsufficientSpace{needed, free});
    }

    /// The walk may have taken a while: a folder that came into being meanwhile is not ours, so the
    /// session's folder must be one that this run made.
    void createSessionRoot() {
        FileSystem::createFolders(sessionRoot_.parent_path());
        while (!FileSystem::createNewFolder(sessionRoot_))
            sessionRoot_ = FolderTemplate::uniqueExisting(wantedSessionRoot());
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
            row.sourceSHA256 = SHA256Hasher::hashFile(cardRoot_ / entry.relativePath,
                                                      SHA256Hasher::bufferSize, watch({}));
            results_.push_back(std::move(row));
        }
        lookIntoClips(cardRoot_);
        return outcome(OutcomeStatus::Hashed, 0);
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
        lookIntoClips(sessionRoot_);
        return outcome(allProved ? OutcomeStatus::Verified : OutcomeStatus::Failed,
                       progress.bytesDone());
    }

    /// What is proved must also outlive a power cut, folder entries and dates included, and the
    /// proof must come from the device. False when the disk could not keep what it was given.
    bool settleOnDevice() {
        try {
            FileSystem::syncVolume(sessionRoot_);
        } catch (const PosixError& failure) {
            reportProblem({Kind::NothingReadBack, destinationRoot_.native(), describe(failure)});
            return false;
        }
        if (DeviceCache::drop(sessionRoot_) == DeviceCache::Drop::NotPossible)
            reportProblem({Kind::ReadFromMemory, destinationRoot_.native()});
        return true;
    }

    void copyFile(const InventoryEntry& entry, int index, CopyProgress& progress) {
        const auto publishFigures = [&] {
            publish(progress.copying(entry.relativePath, index, SpeedMeter::Time::clock::now()));
        };
        publishFigures();
        const auto copied = SHA256Hasher::copyAndHash(
            cardRoot_ / entry.relativePath, sessionRoot_ / entry.relativePath,
            SHA256Hasher::bufferSize, watch([&](std::size_t count) {
                progress.addCopied(static_cast<std::int64_t>(count),
                                   SpeedMeter::Time::clock::now());
                publishFigures();
            }));
        auto row = makeRow(entry, RowAction::Copy, VerifyStatus::CopiedUnverified);
        row.sizeBytes = copied.bytes;
        row.sourceSHA256 = copied.sha256;
        results_.push_back(std::move(row));
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
        const auto target = sessionRoot_ / row.relativePath;
        const auto attributes = FileSystem::attributesIfAny(target);
        const std::int64_t size = attributes ? attributes->sizeBytes : 0;
        std::int64_t bytesRead = 0;
        const auto publishFigures = [&] {
            publish(CopyProgress::verifying(row.relativePath, position, count, bytesRead, size));
        };
        publishFigures();
        row.destSHA256 = Verifier::hashDestination(target, watch([&](std::size_t bytes) {
                                                       bytesRead +=
                                                           static_cast<std::int64_t>(bytes);
                                                       publishFigures();
                                                   }));
        if (Verifier::matches(row.sourceSHA256.value_or(""), *row.destSHA256)) {
            row.verifyStatus = VerifyStatus::Verified;
            return;
        }
        reportProblem(
            {Kind::CopyDiffers, row.relativePath,
             "source " + row.sourceSHA256.value_or("") + " destination " + *row.destSHA256});
        markFailed(row, VerifyStatus::Mismatch);
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

    TransferWatch watch(std::function<void(std::size_t)> onBytes) {
        return {
            .onBytes = std::move(onBytes),
            .onAccess = [this](const auto& path, FileAccess access) { noteAccess(path, access); },
            .stop = stop_};
    }

    /// One log line for each way that files of a volume went.
    void noteAccess(const std::filesystem::path& path, FileAccess access) {
        const bool isCopy = path.native().starts_with(sessionRoot_.native());
        if (!accessesSeen_.insert({isCopy, access}).second)
            return;
        const auto& root = isCopy ? destinationRoot_ : cardRoot_;
        log(Text::displayable(root.native()) + (access == FileAccess::Direct
                                                    ? ": direct I/O"
                                                    : ": cached I/O, dropped from the cache"));
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
            reportProblem({kind, file, describe(failure)});
    }

    void throwIfCancelled() const {
        if (stop_.stop_requested())
            throw CancellationError();
    }

    const Request& request_;
    const Observer& observer_;
    const std::stop_token stop_;
    const std::filesystem::path cardRoot_;
    const std::filesystem::path destinationRoot_;
    std::filesystem::path sessionRoot_;
    std::vector<InventoryEntry> entries_;
    /// Into `entries_`, in its order.
    std::vector<const InventoryEntry*> copyList_;
    std::int64_t totalBytes_ = 0;
    std::vector<FileCopyResult> results_;
    std::vector<OffloadProblem> problems_;
    std::set<std::pair<bool, FileAccess>> accessesSeen_;
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
