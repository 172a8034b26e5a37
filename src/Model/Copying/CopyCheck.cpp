#include "Model/Copying/CopyCheck.h"

#include "Batch/RunMailbox.h"
#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Offload/OffloadError.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"
#include "Verify/TreeCheck.h"

#include <QTimer>

#include <cerrno>
#include <chrono>
#include <stop_token>

namespace slatewise {

namespace {

constexpr std::chrono::milliseconds kProgressInterval{16};
constexpr std::size_t kMostFindings = 20;

std::string_view word(Verify::Difference difference, L10n l10n) {
    using Verify::Difference;
    switch (difference) {
    case Difference::Missing:
        return l10n.fileMissing();
    case Difference::Changed:
        return l10n.fileChanged();
    case Difference::Unreadable:
        return l10n.fileUnreadable();
    case Difference::New:
        return l10n.fileNew();
    case Difference::Unproved:
        return l10n.fileUnproved();
    case Difference::Damaged:
        return l10n.listDamaged();
    case Difference::Failed:
        return l10n.listOfFailedRun();
    }
    return {};
}

/// The set in the archive knows where its footage is; without it, so do the lists on the disk.
Verify::ListedTree listsOf(const HistoryRecord& session, const std::stop_token& stop) {
    const std::filesystem::path reports = session.reportFolder;
    const bool isSetThere = !reports.empty() && FileSystem::exists(reports / "manifest.json");
    return Verify::findLists(
        isSetThere ? reports : std::filesystem::path(session.session.sessionRoot), stop);
}

} // namespace

/// Shared with the worker.
struct CopyCheck::Work {
    Work(HistoryRecord wanted, const ModelState& state)
        : session(std::move(wanted)), l10n(state.l10n()), database(state.database) {}

    const HistoryRecord session;
    const L10n l10n;
    const std::shared_ptr<AppDatabase> database;
    std::stop_source stop;
    RunMailbox mail;
    /// For the worker alone, until it is done.
    CheckRecord check;
    std::string findings;
    bool wasStopped = false;

    void perform();
    void note(const Verify::Finding& finding);
};

void CopyCheck::Work::perform() {
    std::size_t told = 0;
    const Verify::Watch watch = {.progress = mail.observer().progress,
                                 .finding = [&](const Verify::Finding& finding) {
                                     if (told++ < kMostFindings)
                                         note(finding);
                                 }};
    try {
        const auto tree = listsOf(session, stop.get_token());
        const auto result = Verify::check(tree, Verify::Keep::Nothing, watch, stop.get_token());
        check.filesEqual = result.filesEqual;
        check.differences = result.differences;
        if (result.mayBeFromMemory)
            findings += l10n.readFromMemory(Text::visible(tree.root.native())) + "\n";
        for (const auto& path : result.keptInMemory)
            findings += l10n.readFromMemory(Text::visible(path)) + "\n";
    } catch (const CancellationError&) {
        wasStopped = true;
        return;
    } catch (const PosixError& failure) {
        check.failure = failure.code() == ENOENT ? std::string(l10n.sessionFolderGone())
                                                 : Verify::reasonOf(failure, l10n);
    } catch (const std::exception& failure) {
        check.failure = Verify::reasonOf(failure, l10n);
    }
    check.checkedAt = Clock::now();
    try {
        database->recordCheck(session.session.id, check);
    } catch (const std::exception& failure) {
        AppLog::append("Check not stored: " + describe(failure));
    }
}

void CopyCheck::Work::note(const Verify::Finding& finding) {
    findings += Text::visible(finding.path) + ": " + std::string(word(finding.difference, l10n));
    const auto explanation = finding.explanation(l10n);
    if (!explanation.empty())
        findings += " (" + Text::visible(explanation) + ")";
    findings += "\n";
}

CopyCheck::~CopyCheck() {
    cancel();
}

QString CopyCheck::percentText() const {
    return toQString(ProgressTexts::percent(fraction_));
}

void CopyCheck::cancel() {
    if (work_)
        work_->stop.request_stop();
}

void CopyCheck::start(const HistoryRecord& session) {
    if (work_)
        return;
    work_ = std::make_shared<Work>(session, state_);
    standing_ = BatchControl::Busy;
    findings_.clear();
    show(Phase::Scanning());
    run(this, work_);
}

QCoro::Task<> CopyCheck::run(QPointer<CopyCheck> self, std::shared_ptr<Work> work) {
    QTimer postman;
    QObject::connect(&postman, &QTimer::timeout, self.data(), [self, work] {
        if (const auto mail = work->mail.take(); mail.phase)
            self->show(*mail.phase);
    });
    postman.start(kProgressInterval);
    const auto checking = onWorker([work] { work->perform(); });
    co_await checking;
    postman.stop();
    if (!self)
        co_return;
    self->work_.reset();
    self->showEnd(*work);
    Q_EMIT self->finished();
}

void CopyCheck::show(const OffloadPhase& phase) {
    const auto* verifying = std::get_if<Phase::Verifying>(&phase);
    fraction_ = verifying ? verifying->fraction : 0;
    title_ = toQString(ProgressTexts::title(phase, {}, state_.l10n()));
    Q_EMIT changed();
}

void CopyCheck::showEnd(const Work& work) {
    if (work.wasStopped) {
        standing_ = BatchControl::Resting;
        fraction_ = 0;
        title_ = toQString(state_.l10n().cancelled());
    } else {
        standing_ = work.check.isGood() ? BatchControl::Succeeded : BatchControl::Failed;
        fraction_ = work.check.isGood() ? 1 : 0;
        title_ = toQString(Text::displayable(work.session.session.cardName) + " — " +
                           verdictOf(work.check, state_.language));
    }
    findings_ = toQString(Text::trimmed(work.findings));
    Q_EMIT changed();
}

std::string verdictOf(const CheckRecord& check, AppLanguage language) {
    const L10n l10n(language);
    const auto date = Clock::mediumDateTime(check.checkedAt, Language::locale(language));
    if (!check.failure.empty())
        return l10n.checkFailed(date, check.failure);
    return check.differences > 0 ? l10n.checkFoundDifferences(date, check.differences)
                                 : l10n.checkFoundAllEqual(date, check.filesEqual);
}

} // namespace slatewise
