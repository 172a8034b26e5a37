#include "Batch/PairTraces.h"

#include "Language/L10n.h"
#include "Platform/Error.h"
#include "Reports/ReportFolder.h"
#include "Reports/ReportWriter.h"
#include "Service/OutboxPayload.h"
#include "Storage/AppLog.h"

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
          tell_(tell), archive_(*pair.archiveFolder), disk_(*pair.destinationFolder),
          manifest_(manifestOf(std::exchange(outcome.files, {}))) {}

    Folders leave() {
        putIntoArchive();
        const auto told = outcome_.problems.size();
        putOntoDisk();
        lookOnceMore();
        if (outcome_.problems.size() != told)
            putFailureInPlace();
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

    void putIntoArchive() {
        try {
            name_ = claimName(archive_);
            writeIntoArchive();
        } catch (const std::exception& failure) {
            fail(OffloadProblem::of(Kind::ReportsNotArchived, archive_.path().native(), failure,
                                    plan_.l10n()));
            manifest_ = manifestOf(std::move(manifest_.files));
            writeAside();
        }
    }

    void writeIntoArchive() {
        ReportFolder::putWhole(archive_, name_, [&](const std::filesystem::path& passing) {
            const auto path = archive_.path() / passing;
            const auto made = archive_.below(passing);
            const auto requireSame = [&] {
                if (!made.isSame(RootFolder(path)))
                    throw PosixError("open", path, ENOENT);
            };
            requireSame();
            ReportWriter::write(manifest_, path, plan_.language);
            requireSame();
        });
        folders_.inArchive = archive_.path() / name_;
        set_.emplace(archive_.below(name_));
    }

    /// The disk gets its set even so.
    void writeAside() {
        set_.reset();
        try {
            if (!aside_)
                aside_.emplace();
            const RootFolder aside(aside_->path());
            if (name_.empty())
                name_ = claimName(aside);
            ReportWriter::write(manifest_, aside_->path() / name_, plan_.language);
            set_.emplace(aside.below(name_));
        } catch (const std::exception& failure) {
            AppLog::append("Reports not written: " + describe(failure));
        }
    }

    std::string claimName(const RootFolder& archive) const {
        const auto wanted = ReportFolder::displayName(outcome_.startedAt, pair_.ekip, pair_.camera,
                                                      pair_.card.facts.volumeName);
        return ReportFolder::claim(wanted, outcome_.sessionID.text(), archive,
                                   isDiskInPlace() && !isArchiveTheDisk() ? &disk_ : nullptr);
    }

    /// Who hashes without a disk has the archive for one.
    bool isArchiveTheDisk() const { return plan_.settings.verifyOnly && disk_.isSame(archive_); }

    /// A user may have put the archive where the copy goes.
    bool isArchiveOnDisk() const {
        try {
            return isArchiveTheDisk() ||
                   (set_ && disk_.below(ReportFolder::onDestination(name_)).isSame(*set_));
        } catch (const PosixError&) {
            return false;
        }
    }

    /// What lies beneath a disk that is gone is none of ours.
    bool isDiskInPlace() const { return disk_.isStillAtItsPath(); }

    void putOntoDisk() {
        if (!set_ || !isDiskInPlace())
            return;
        try {
            copySetToDisk();
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

    void copySetToDisk() {
        if (isArchiveOnDisk()) {
            folders_.onDestination = folders_.inArchive;
            return;
        }
        const auto set = ReportFolder::onDestination(name_);
        ReportFolder::putWhole(disk_, set, [&](const std::filesystem::path& passing) {
            ReportWriter::copySidecars(*set_, disk_, passing);
        });
        folders_.onDestination = pair_.destination.facts.mountPoint / set;
    }

    /// The sets told of an end that was not to be. They are taken away, and made again with what
    /// has become known since, as far as that is possible: none rather than one that is wrong.
    void putFailureInPlace() {
        if (!folders_.onDestination.empty() && !isArchiveOnDisk())
            ReportFolder::remove(disk_, ReportFolder::onDestination(name_));
        folders_.onDestination.clear();
        manifest_ = manifestOf(std::move(manifest_.files));
        const bool wasArchived = !std::exchange(folders_.inArchive, {}).empty();
        if (wasArchived)
            ReportFolder::remove(archive_, name_);
        if (!wasArchived || !attempt([&] { writeIntoArchive(); }))
            writeAside();
        if (set_ && isDiskInPlace())
            attempt([&] { copySetToDisk(); });
    }

    /// What fails is told already.
    template <typename Step>
    static bool attempt(Step step) {
        try {
            step();
            return true;
        } catch (const std::exception& failure) {
            AppLog::append("Reports not written again: " + describe(failure));
            return false;
        }
    }

    SessionTraces sessionTraces() const {
        const auto& set = folders_.inArchive.empty() ? folders_.onDestination : folders_.inArchive;
        return {.ekip = pair_.ekip,
                .reportFolder = set.native(),
                .cardUUID =
                    pair_.card.isPickedFolder() ? "" : pair_.card.facts.volumeUUID.value_or("")};
    }

    void save() {
        if (const auto aside = database_.takeSetAside())
            report({Kind::HistorySetAside, aside->native()});
        try {
            database_.save(outcome_, manifest_.files, pair_.card.facts.volumeName,
                           pair_.destination.facts.volumeName, pair_.camera, sessionTraces());
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
                AppLog::append(problem.logLine());
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
        if (tell_)
            tell_(problem);
    }

    const BatchPlan& plan_;
    const BatchPair& pair_;
    OffloadOutcome& outcome_;
    const ProvedCopies* copies_;
    AppDatabase& database_;
    const Tell& tell_;
    const RootFolder& archive_;
    const RootFolder& disk_;
    SessionManifest manifest_;
    /// Of the set's folder, wherever it lies.
    std::string name_;
    /// Where the set was written, to be copied from; empty when it could not be.
    std::optional<RootFolder> set_;
    std::optional<PassingFolder> aside_;
    Folders folders_;
};

} // namespace

Folders leave(const BatchPlan& plan, const BatchPair& pair, OffloadOutcome& outcome,
              const ProvedCopies* copies, AppDatabase& database, const Tell& tell) {
    return Traces(plan, pair, outcome, copies, database, tell).leave();
}

} // namespace slatewise::PairTraces
