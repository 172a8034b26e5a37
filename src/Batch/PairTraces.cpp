#include "Batch/PairTraces.h"

#include "Language/L10n.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Reports/PassingSet.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Service/OutboxPayload.h"
#include "Storage/AppLog.h"
#include "Storage/StoreFailure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace slatewise::PairTraces {

namespace {

using Kind = OffloadProblem::Kind;

class Traces {
public:
    Traces(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
           ProvedCopies* copies, AppDatabase& database, const Tell& tell,
           const std::stop_token& stop, const std::function<bool()>& isGivenUp)
        : plan_(plan), pair_(pair), outcome_(outcome), copies_(copies), database_(database),
          tell_(tell), stop_(stop), isGivenUp_(isGivenUp), archive_(*pair.archiveFolder),
          disk_(*pair.destinationFolder), manifest_(manifestOf(std::exchange(outcome.files, {}))) {}

    Folders leave() {
        makeInArchive();
        const auto told = outcome_.problems.size();
        makeOnDisk();
        const bool wasStopped = lookOnceMore();
        if (isGivenUp_ && isGivenUp_())
            fail({Kind::ReportsNotAwaited, pair_.name});
        if (wasStopped || outcome_.problems.size() != told)
            makeAgain();
        putInPlace();
        giveUpClaims();
        const bool isArchiveBest = isArchiveWhole_ || folders_.onDestination.empty();
        folders_.shown = isArchiveBest && !folders_.inArchive.empty() ? folders_.inArchive
                                                                      : folders_.onDestination;
        folders_.wasStopped = wasStopped;
        folders_.filesProved = static_cast<int>(
            std::count_if(manifest_.files.begin(), manifest_.files.end(), [](const auto& row) {
                return row.verifyStatus == VerifyStatus::Verified;
            }));
        save();
        enqueue();
        return std::move(folders_);
    }

private:
    SessionManifest manifestOf(std::vector<FileCopyResult> files) const {
        auto manifest = ReportWriter::buildManifest(outcome_, std::move(files), pair_.card.facts,
                                                    pair_.destination.facts, pair_.camera,
                                                    pair_.ekip, plan_.language);
        // Below a folder that is left out there is no row that could say so.
        const auto names = plan_.settings.skipNames();
        if (names != TreeWalker::defaultSkipNames())
            manifest.skipNames.emplace(names.begin(), names.end());
        return manifest;
    }

    void makeInArchive() {
        try {
            requireAtItsPath(archive_);
            if (name_.empty()) {
                name_ = claimName();
                isClaimedInArchive_ = true;
            }
            archived_.emplace(archive_, name_);
            isArchiveWhole_ = writeSet(archived_->folder(), archive_.path().native());
        } catch (const std::exception& failure) {
            archived_.reset();
            failOnce(Kind::ReportsNotArchived, archive_.path().native(), failure);
            manifest_ = manifestOf(std::move(manifest_.files));
        }
    }

    /// A set goes to the folder that is held; people look for it by its path.
    static void requireAtItsPath(const RootFolder& root) {
        if (!root.isStillAtItsPath())
            throw PosixError("open", root.path(), ENOENT);
    }

    /// A page that cannot be made costs no list. False when one is missing, which the set then
    /// says. `place` is for messages.
    bool writeSet(const RootFolder& folder, const std::string& place) {
        ReportWriter::writeLists(manifest_, folder, plan_.language);
        try {
            ReportWriter::writePages(manifest_, folder, plan_.language);
            return true;
        } catch (const std::exception& failure) {
            if (isTold(Kind::PagesNotWritten, place))
                return false;
            fail(OffloadProblem::of(Kind::PagesNotWritten, place, failure));
        }
        manifest_ = manifestOf(std::move(manifest_.files));
        // Where it was room that lacked, the lists need what the pages took.
        ReportFolder::clear(folder, "");
        ReportWriter::writeLists(manifest_, folder, plan_.language);
        try {
            ReportWriter::writePages(manifest_, folder, plan_.language);
        } catch (const std::exception& failure) {
            AppLog::append("Pages not written again: " + describe(failure));
        }
        return false;
    }

    std::string claimName() const {
        return ReportFolder::claim(wantedName(), outcome_.sessionID.text(), archive_,
                                   isDiskInPlace() && !isArchiveTheDisk() ? &disk_ : nullptr);
    }

    std::string wantedName() const {
        return ReportFolder::displayName(outcome_.startedAt, pair_.ekip, pair_.camera,
                                         pair_.card.facts.volumeName);
    }

    /// Who hashes without a disk has the archive for one.
    bool isArchiveTheDisk() const { return plan_.settings.verifyOnly && disk_.isSame(archive_); }

    /// A user may have put the archive where the copy goes.
    bool isArchiveOnDisk() const {
        try {
            return isArchiveTheDisk() ||
                   disk_.below(ReportFolder::onDestination(name_)).isSame(archive_.below(name_));
        } catch (const PosixError&) {
            return false;
        }
    }

    /// What lies beneath a disk that is gone is none of ours.
    bool isDiskInPlace() const { return disk_.isStillAtItsPath(); }

    void makeOnDisk() {
        if (!isDiskInPlace() || isArchiveTheDisk() || (archived_ && isArchiveOnDisk()))
            return;
        try {
            // What the archive could not take may have room here.
            if (name_.empty())
                name_ = claimOnDisk();
            onDisk_.emplace(disk_, ReportFolder::onDestination(name_));
            if (archived_ && isArchiveWhole_)
                copySet(onDisk_->folder());
            else
                writeSet(onDisk_->folder(), pair_.destination.name());
        } catch (const std::exception& failure) {
            onDisk_.reset();
            failOnce(Kind::ReportsNotCopied, pair_.destination.name(), failure);
        }
    }

    /// Writing the sets takes its time, and whoever reads "verified" in one reads it now. Gives
    /// whether a stop left open what became of the copies, which are not proved then.
    bool lookOnceMore() {
        if (!isDiskInPlace()) {
            onDisk_.reset();
            fail({Kind::DiskReplaced, pair_.destination.name()});
            return false;
        }
        if (!copies_)
            return false;
        const auto changes = copies_->findChanged(manifest_.files, stop_);
        for (const auto& problem : changes.problems)
            fail(problem);
        // They stand beside the copies, and were written when all was well.
        for (const auto& list : changes.isNone() ? std::vector<std::string>() : outcome_.hashLists)
            fail({Kind::ReportsOutdated, (outcome_.sessionRoot / list).native()});
        if (changes.wasStopped)
            outcome_.status = OutcomeStatus::Failed;
        return changes.wasStopped;
    }

    /// The sets on their way tell of an end that was not to be: they are made anew with what has
    /// become known since.
    void makeAgain() {
        const bool wasArchived = archived_.has_value();
        const bool wasOnDisk = onDisk_.has_value();
        archived_.reset();
        onDisk_.reset();
        manifest_ = manifestOf(std::move(manifest_.files));
        if (wasArchived)
            makeInArchive();
        if (wasOnDisk)
            makeOnDisk();
    }

    /// The set on the disk first: that of the archive can still be made again when the disk does
    /// not take its own.
    void putInPlace() {
        const auto told = outcome_.problems.size();
        putDisksInPlace();
        if (outcome_.problems.size() != told && archived_)
            makeAgain();
        const auto toldOnDisk = outcome_.problems.size();
        putArchivesInPlace();
        if (outcome_.problems.size() != toldOnDisk && !folders_.onDestination.empty())
            correctOnDisk();
    }

    void putDisksInPlace() {
        if (put(onDisk_, disk_, Kind::ReportsNotCopied, pair_.destination.name())) {
            folders_.onDestination =
                pair_.destination.facts.mountPoint / ReportFolder::onDestination(name_);
        }
    }

    void putArchivesInPlace() {
        const bool isOnDisk = archived_ && isArchiveOnDisk();
        if (!put(archived_, archive_, Kind::ReportsNotArchived, archive_.path().native()))
            return;
        folders_.inArchive = archive_.path() / name_;
        if (isOnDisk)
            folders_.onDestination = folders_.inArchive;
    }

    /// False where there is none, and when it cannot stand there, which is told.
    bool put(std::optional<PassingSet>& set, const RootFolder& root, Kind kind,
             const std::string& place) {
        if (!set)
            return false;
        try {
            set->putInPlace();
            requireAtItsPath(root);
            return true;
        } catch (const std::exception& failure) {
            failOnce(kind, place, failure);
            takeBack(set);
            return false;
        }
    }

    /// The set that stands on the disk tells of a better end than there was. None rather than one
    /// that is wrong.
    void correctOnDisk() {
        folders_.onDestination.clear();
        if (!takeBack(onDisk_))
            return;
        manifest_ = manifestOf(std::move(manifest_.files));
        makeOnDisk();
        putDisksInPlace();
    }

    /// False, and told, when some of a set stays that tells of a better end.
    bool takeBack(std::optional<PassingSet>& set) {
        const bool isGone = set->takeBack();
        if (!isGone)
            fail({Kind::ReportsOutdated, set->path().native()});
        set.reset();
        return isGone;
    }

    std::string claimOnDisk() const {
        const auto reports = ReportFolder::onDestination({}).parent_path();
        disk_.createFolders(reports);
        return ReportFolder::claim(wantedName(), outcome_.sessionID.text(), disk_.below(reports),
                                   nullptr);
    }

    void copySet(const RootFolder& passing) const {
        const int copied = ReportWriter::copySidecars(archived_->folder(), passing);
        // Somebody else may be tidying up the archive.
        if (copied != static_cast<int>(ReportWriter::fileNames.size()))
            throw PosixError("read", archived_->folder().path(), ENOENT);
    }

    /// Of sets that could not be left.
    void giveUpClaims() const {
        if (name_.empty())
            return;
        if (isClaimedInArchive_ && folders_.inArchive.empty())
            ReportFolder::removeIfEmpty(archive_, name_);
        if (folders_.onDestination.empty())
            ReportFolder::removeIfEmpty(disk_, ReportFolder::onDestination(name_));
    }

    SessionFacts sessionFacts() const {
        return {.ekip = pair_.ekip,
                .reportFolder = folders_.shown.native(),
                .cardUUID =
                    pair_.card.isPickedFolder() ? "" : pair_.card.facts.volumeUUID.value_or("")};
    }

    void save() {
        if (const auto aside = database_.takeSetAside())
            report({Kind::HistorySetAside, aside->native()});
        try {
            database_.save(outcome_, manifest_.files, pair_.card.facts.volumeName,
                           pair_.destination.facts.volumeName, pair_.camera, sessionFacts());
        } catch (const std::exception& failure) {
            report(ofStore(Kind::SessionNotStored, failure));
        }
        AppLog::append(fmt::format("Offload {} card={} dest={} files={} bytes={}",
                                   rawValue(outcome_.status), pair_.card.facts.volumeName,
                                   pair_.destination.facts.volumeName, manifest_.files.size(),
                                   outcome_.bytesCopied));
    }

    void enqueue() {
        try {
            selfEnqueue(manifest_, database_);
        } catch (const std::exception& failure) {
            const auto problem = ofStore(Kind::SessionNotQueued, failure);
            if (plan_.serviceProfile)
                report(problem);
            else
                AppLog::append(problem.logLine());
        }
    }

    OffloadProblem ofStore(Kind kind, const std::exception& failure) const {
        AppLog::append("Store not written: " + describe(failure));
        return {kind, pair_.card.name(), BothLanguages::of([&](L10n l10n) {
                    return StoreFailure::reasonOf(failure, l10n);
                })};
    }

    bool isTold(Kind kind, const std::string& subject) const {
        return std::any_of(outcome_.problems.begin(), outcome_.problems.end(),
                           [&](const OffloadProblem& problem) {
                               return problem.kind == kind && problem.subject == subject;
                           });
    }

    /// Of a place that failed before it is told already.
    void failOnce(Kind kind, const std::string& place, const std::exception& failure) {
        outcome_.status = OutcomeStatus::Failed;
        AppLog::append("Reports not written: " + describe(failure));
        if (!isTold(kind, place))
            fail(OffloadProblem::of(kind, place, failure));
    }

    void fail(const OffloadProblem& problem) {
        outcome_.status = OutcomeStatus::Failed;
        const auto& known = outcome_.problems;
        if (std::find(known.begin(), known.end(), problem) != known.end())
            return;
        report(problem);
    }

    void report(const OffloadProblem& problem) {
        outcome_.problems.push_back(problem);
        if (tell_)
            tell_(problem);
    }

    const BatchPlan& plan_;
    const BatchPair& pair_;
    OffloadOutcome& outcome_;
    ProvedCopies* copies_;
    AppDatabase& database_;
    const Tell& tell_;
    const std::stop_token& stop_;
    const std::function<bool()>& isGivenUp_;
    const RootFolder& archive_;
    const RootFolder& disk_;
    SessionManifest manifest_;
    /// Of the set's folder, wherever it lies.
    std::string name_;
    /// Else it may be somebody else's there.
    bool isClaimedInArchive_ = false;
    /// The pair's set, on its way and in place. Empty where there is none.
    std::optional<PassingSet> archived_;
    std::optional<PassingSet> onDisk_;
    bool isArchiveWhole_ = false;
    Folders folders_;
};

} // namespace

Folders leave(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
              ProvedCopies* copies, AppDatabase& database, const Tell& tell,
              const std::stop_token& stop, const std::function<bool()>& isGivenUp) {
    return Traces(plan, pair, outcome, copies, database, tell, stop, isGivenUp).leave();
}

} // namespace slatewise::PairTraces
