#include "Batch/PairSets.h"

#include "Offload/OffloadError.h"
#include "Platform/Error.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Storage/AppLog.h"

#include <cerrno>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

/// A set goes to the folder that is held; people look for it by its path.
void requireAtItsPath(const RootFolder& root) {
    if (!root.isStillAtItsPath())
        throw PosixError("open", root.path(), ENOENT);
}

} // namespace

PairSets::PairSets(PairRecord& record)
    : record_(record), archive_(*record.pair().archiveFolder),
      disk_(*record.pair().destinationFolder) {}

// Making them

void PairSets::make() {
    makeInArchive();
    told_ = record_.problemCount();
    makeOnDisk();
}

/// What was made tells of an end that was not to be.
void PairSets::bringUpToDate() {
    if (hasNews())
        makeAgain(archived_.has_value(), onDisk_.has_value());
}

void PairSets::makeAgain(bool inArchive, bool onDisk) {
    archived_.reset();
    onDisk_.reset();
    record_.renew();
    if (inArchive)
        makeInArchive();
    told_ = record_.problemCount();
    if (onDisk)
        makeOnDisk();
}

void PairSets::makeInArchive() {
    try {
        requireAtItsPath(archive_);
        if (name_.empty()) {
            name_ = claimName();
            isClaimedInArchive_ = true;
        }
        archived_.emplace(archive_, name_);
        isArchiveWhole_ = write(archived_->folder(), archive_.path().native());
    } catch (const std::exception& failure) {
        archived_.reset();
        record_.failOnce(Kind::ReportsNotArchived, archive_.path().native(), failure);
        record_.renew();
    }
}

void PairSets::makeOnDisk() {
    if (isArchiveTheDisk() || (archived_ && isArchiveOnDisk()))
        return;
    const auto disk = record_.pair().destination.name();
    if (!isDiskInPlace())
        return record_.fail({Kind::DiskReplaced, disk});
    try {
        // What the archive could not take may have room here.
        if (name_.empty())
            name_ = claimOnDisk();
        onDisk_.emplace(disk_, ReportFolder::onDestination(name_));
        if (archived_ && isArchiveWhole_)
            copyFromArchive(onDisk_->folder());
        else
            write(onDisk_->folder(), disk);
    } catch (const std::exception& failure) {
        onDisk_.reset();
        record_.failOnce(Kind::ReportsNotCopied, disk, failure);
    }
}

/// A page that cannot be made costs no list. False when one is missing, which the set then says.
/// `place` is for messages.
bool PairSets::write(const RootFolder& folder, const std::string& place) {
    const auto language = record_.plan().language;
    ReportWriter::writeLists(record_.manifest(), folder, language);
    try {
        ReportWriter::writePages(record_.manifest(), folder, language);
        return true;
    } catch (const std::exception& failure) {
        if (record_.isTold(Kind::PagesNotWritten, place))
            return false;
        record_.fail(OffloadProblem::of(Kind::PagesNotWritten, place, failure));
    }
    record_.renew();
    // Where it was room that lacked, the lists need what the pages took.
    ReportFolder::clear(folder, "");
    ReportWriter::writeLists(record_.manifest(), folder, language);
    try {
        ReportWriter::writePages(record_.manifest(), folder, language);
    } catch (const std::exception& failure) {
        AppLog::append("Pages not written again: " + describe(failure));
    }
    return false;
}

void PairSets::copyFromArchive(const RootFolder& passing) const {
    const int copied = ReportWriter::copySidecars(archived_->folder(), passing);
    // Somebody else may be tidying up the archive.
    if (copied != static_cast<int>(ReportWriter::fileNames.size()))
        throw PosixError("read", archived_->folder().path(), ENOENT);
}

// Putting them in place

/// The set on the disk first: that of the archive can still be made again when the disk does not
/// take its own. None rather than one that is wrong.
void PairSets::putInPlace(const std::function<bool()>& isPlacedInTime,
                          const std::function<bool()>& isEndedInTime) {
    const OffloadProblem notAwaited = {Kind::ReportsNotAwaited, record_.pair().name};
    putDisksInPlace();
    if (!isPlacedInTime())
        record_.fail(notAwaited);
    if (hasNews()) {
        const bool wasOnDisk = takeBack(onDisk_, onDestination_);
        makeAgain(archived_.has_value(), wasOnDisk);
        putDisksInPlace();
    }
    putArchivesInPlace();
    if (!isEndedInTime())
        record_.fail(notAwaited);
    if (hasNews()) {
        const bool wasOnDisk = takeBack(onDisk_, onDestination_);
        makeAgain(takeBack(archived_, inArchive_), wasOnDisk);
        putDisksInPlace();
        // The archive's may still say what became of the disk's.
        if (hasNews())
            makeAgain(archived_.has_value(), false);
        putArchivesInPlace();
    }
    giveUpClaims();
}

void PairSets::putDisksInPlace() {
    const auto& destination = record_.pair().destination;
    if (put(onDisk_, disk_, Kind::ReportsNotCopied, destination.name()))
        onDestination_ = destination.facts.mountPoint / ReportFolder::onDestination(name_);
}

void PairSets::putArchivesInPlace() {
    const bool isOnDisk = archived_ && isArchiveOnDisk();
    if (!put(archived_, archive_, Kind::ReportsNotArchived, archive_.path().native()))
        return;
    inArchive_ = archive_.path() / name_;
    if (isOnDisk)
        onDestination_ = inArchive_;
}

/// False where there is none, and when it cannot stand there, which is told.
bool PairSets::put(std::optional<PassingSet>& set, const RootFolder& root, Kind kind,
                   const std::string& place) {
    if (!set)
        return false;
    try {
        set->putInPlace();
        requireAtItsPath(root);
        return true;
    } catch (const std::exception& failure) {
        record_.failOnce(kind, place, failure);
        std::filesystem::path nowhere;
        takeBack(set, nowhere);
        return false;
    }
}

/// Whether one stood there and is gone. When some of a set stays that tells of a better end, that
/// is told.
bool PairSets::takeBack(std::optional<PassingSet>& set, std::filesystem::path& place) {
    place.clear();
    if (!set)
        return false;
    const bool isGone = set->takeBack();
    if (!isGone)
        record_.fail({Kind::ReportsOutdated, set->path().native()});
    set.reset();
    return isGone;
}

const std::filesystem::path& PairSets::shown() const {
    const bool isArchiveBest = isArchiveWhole_ || onDestination_.empty();
    return isArchiveBest && !inArchive_.empty() ? inArchive_ : onDestination_;
}

// Their names

std::string PairSets::wantedName() const {
    const auto& pair = record_.pair();
    return ReportFolder::displayName(record_.outcome().startedAt, pair.ekip, pair.camera,
                                     pair.card.facts.volumeName);
}

std::string PairSets::claimName() const {
    return ReportFolder::claim(wantedName(), record_.outcome().sessionID.text(), archive_,
                               isDiskInPlace() && !isArchiveTheDisk() ? &disk_ : nullptr);
}

std::string PairSets::claimOnDisk() const {
    const auto reports = ReportFolder::onDestination({}).parent_path();
    disk_.createFolders(reports);
    return ReportFolder::claim(wantedName(), record_.outcome().sessionID.text(),
                               disk_.below(reports), nullptr);
}

/// Of sets that could not be left.
void PairSets::giveUpClaims() const {
    if (name_.empty())
        return;
    if (isClaimedInArchive_ && inArchive_.empty())
        ReportFolder::removeIfEmpty(archive_, name_);
    if (onDestination_.empty())
        ReportFolder::removeIfEmpty(disk_, ReportFolder::onDestination(name_));
}

/// Who hashes without a disk has the archive for one.
bool PairSets::isArchiveTheDisk() const {
    return record_.plan().settings.verifyOnly && disk_.isSame(archive_);
}

/// A user may have put the archive where the copy goes.
bool PairSets::isArchiveOnDisk() const {
    try {
        return isArchiveTheDisk() ||
               disk_.below(ReportFolder::onDestination(name_)).isSame(archive_.below(name_));
    } catch (const PosixError&) {
        return false;
    }
}

} // namespace slatewise
