#include "Batch/PairTraces.h"

#include "Platform/Error.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Service/OutboxPayload.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <utility>

namespace slatewise::PairTraces {

namespace {

using Kind = OffloadProblem::Kind;

/// A folder of ours alone that goes with its content.
class PassingFolder {
public:
    PassingFolder() {
        auto name = (std::filesystem::temp_directory_path() / "slatewise-XXXXXX").native();
        if (!::mkdtemp(name.data()))
            throw PosixError("mkdtemp", name, errno);
        path_ = name;
    }
    ~PassingFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    PassingFolder(const PassingFolder&) = delete;
    PassingFolder& operator=(const PassingFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

class Traces {
public:
    Traces(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
           const ProvedCopies* copies, AppDatabase& database, const Tell& tell)
        : plan_(plan), pair_(pair), outcome_(outcome), copies_(copies), database_(database),
          tell_(tell), archive_(SupportPaths::reportsArchive(plan.settings)),
          manifest_(manifestOf(std::exchange(outcome.files, {}))) {}

    Folders leave() {
        writeSet();
        const auto told = outcome_.problems.size();
        copySetToDestination();
        lookOnceMore();
        if (outcome_.problems.size() != told)
            writeSetAgain();
        save();
        enqueue();
        return std::move(folders_);
    }

private:
    SessionManifest manifestOf(std::vector<FileCopyResult> files) const {
        return ReportWriter::buildManifest(outcome_, std::move(files), pair_.card.facts,
                                           pair_.destination.facts, pair_.camera, pair_.ekip,
                                           plan_.language);
    }

    void writeSet() {
        try {
            name_ = claimName(archive_);
            set_ = archive_ / name_;
            ReportWriter::write(manifest_, set_, plan_.language);
            folders_.inArchive = set_;
        } catch (const std::exception& failure) {
            fail(OffloadProblem::of(Kind::ReportsNotArchived, archive_.native(), failure,
                                    plan_.l10n()));
            writeSetAside();
        }
    }

    /// The disk gets its set even so.
    void writeSetAside() {
        set_.clear();
        manifest_ = manifestOf(std::move(manifest_.files));
        try {
            aside_.emplace();
            if (name_.empty())
                name_ = claimName(aside_->path());
            ReportWriter::write(manifest_, aside_->path() / name_, plan_.language);
            set_ = aside_->path() / name_;
        } catch (const std::exception& failure) {
            AppLog::append("Reports not written: " + describe(failure));
        }
    }

    std::string claimName(const std::filesystem::path& archive) const {
        const auto wanted = ReportFolder::displayName(outcome_.startedAt, pair_.ekip, pair_.camera,
                                                      pair_.card.facts.volumeName);
        return ReportFolder::claim(
            wanted, outcome_.sessionID.text(), archive,
            isDiskInPlace() && !isArchiveTheDisk() ? pair_.destinationFolder.get() : nullptr);
    }

    /// Who hashes without a disk has the archive for one.
    bool isArchiveTheDisk() const {
        return plan_.settings.verifyOnly && pair_.destinationFolder->isSame(RootFolder(archive_));
    }

    /// What lies beneath a disk that is gone is none of ours.
    bool isDiskInPlace() const { return pair_.destinationFolder->isStillAtItsPath(); }

    void copySetToDestination() {
        if (!isDiskInPlace() || set_.empty())
            return;
        try {
            if (isArchiveTheDisk()) {
                folders_.onDestination = folders_.inArchive;
                return;
            }
            const auto onDestination = ReportFolder::onDestination(name_);
            ReportWriter::copySidecars(RootFolder(set_), *pair_.destinationFolder, onDestination);
            folders_.onDestination = pair_.destination.facts.mountPoint / onDestination;
        } catch (const std::exception& failure) {
            fail(OffloadProblem::of(Kind::ReportsNotCopied, pair_.destination.name(), failure,
                                    plan_.l10n()));
        }
    }

    /// Writing the set takes its time, and whoever reads "verified" in it reads it now.
    void lookOnceMore() {
        // The set went to the disk that is held; people look for it by its path.
        if (!isDiskInPlace()) {
            fail({Kind::DiskReplaced, pair_.destination.name()});
            return;
        }
        if (!copies_)
            return;
        for (const auto& problem : copies_->findChanged(manifest_.files, outcome_.hashLists))
            fail(problem);
    }

    /// With what has become known since. What lies there already is no better than nothing.
    void writeSetAgain() {
        manifest_ = manifestOf(std::move(manifest_.files));
        if (set_.empty())
            return;
        try {
            ReportWriter::write(manifest_, set_, plan_.language);
        } catch (const std::exception& failure) {
            AppLog::append("Reports not written again: " + describe(failure));
            return;
        }
        copySetToDestination();
    }

    void save() {
        try {
            database_.save(outcome_, manifest_.files, pair_.card.facts.volumeName,
                           pair_.destination.facts.volumeName, pair_.camera);
            database_.saveTraces(
                outcome_.sessionID.text(), pair_.ekip,
                folders_.inArchive.empty() ? folders_.onDestination : folders_.inArchive,
                pair_.card.isPickedFolder() ? std::string()
                                            : pair_.card.facts.volumeUUID.value_or(""));
        } catch (const std::exception& failure) {
            report(OffloadProblem::of(Kind::SessionNotStored, pair_.card.name(), failure,
                                      plan_.l10n()));
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
            const auto problem = OffloadProblem::of(Kind::SessionNotQueued, pair_.card.name(),
                                                    failure, plan_.l10n());
            if (plan_.serviceProfile)
                report(problem);
            else
                log(problem);
        }
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
        log(problem);
        if (tell_)
            tell_(problem);
    }

    static void log(const OffloadProblem& problem) {
        AppLog::append(problem.text(L10n(AppLanguage::English)));
    }

    const BatchPlan& plan_;
    const BatchPair& pair_;
    OffloadOutcome& outcome_;
    const ProvedCopies* copies_;
    AppDatabase& database_;
    const Tell& tell_;
    const std::filesystem::path archive_;
    SessionManifest manifest_;
    /// Of the set's folder, wherever it lies.
    std::string name_;
    /// Where the set was written, to be copied from; empty when it could not be.
    std::filesystem::path set_;
    std::optional<PassingFolder> aside_;
    Folders folders_;
};

} // namespace

Folders leave(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
              const ProvedCopies* copies, AppDatabase& database, const Tell& tell) {
    return Traces(plan, pair, outcome, copies, database, tell).leave();
}

} // namespace slatewise::PairTraces
