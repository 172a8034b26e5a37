#include "Model/History/SessionHistory.h"

#include "Batch/BatchPlan.h"
#include "Language/L10n.h"
#include "Model/Volumes/FolderPresence.h"
#include "Offload/PathSize.h"
#include "Offload/ReportNames.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

#include <algorithm>
#include <chrono>

namespace slatewise {

namespace {

/// More than anybody scrolls through; a search finds the others.
constexpr std::size_t kMostRows = 300;

/// A store that another program holds comes free at some time.
constexpr std::chrono::seconds kUntilNextTry{2};

struct WhatIsStored {
    std::vector<HistoryRecord> records;
    std::filesystem::path setAside;
    /// The file cannot be had: it is what happened since the start.
    bool isPart = false;
};

/// Nothing when the store cannot be read. One that could not be the last time either is in the log
/// already.
std::optional<WhatIsStored> historyOf(const AppDatabase& database, bool wasUnread) {
    try {
        const bool isPart = !database.awaited().empty();
        return WhatIsStored{database.history(), database.setAside(), isPart};
    } catch (const std::exception& failure) {
        if (!wasUnread)
            AppLog::append("History not read: " + describe(failure));
        return std::nullopt;
    }
}

std::string_view verdict(OutcomeStatus status, L10n l10n) {
    switch (status) {
    case OutcomeStatus::Verified:
        return l10n.verdictVerified();
    case OutcomeStatus::Hashed:
        return l10n.verdictHashed();
    case OutcomeStatus::Failed:
        break;
    }
    return l10n.verdictFailed();
}

bool hasAll(const std::string& text, const std::string& words) {
    const auto folded = Text::caseFolded(text);
    const auto wanted = Text::caseFolded(words);
    const auto pieces = Text::pieces(wanted, ' ');
    return std::all_of(pieces.begin(), pieces.end(), [&](std::string_view word) {
        return folded.find(word) != std::string::npos;
    });
}

} // namespace

SessionHistory::SessionHistory(ModelState& state, ReportsFolder& reports)
    : state_(state), reports_(reports), check_(state) {
    nextTry_.setSingleShot(true);
    nextTry_.setInterval(kUntilNextTry);
    connect(&nextTry_, &QTimer::timeout, this, [this] { readAgain(this); });
    connect(&state, &ModelState::changed, this, &SessionHistory::show);
    connect(&check_, &CopyCheck::finished, this,
            [this](const std::string& sessionID, const CheckRecord& record) {
                checks_[sessionID] = record;
                takeChecks();
                show();
                readAgain(this);
            });
}

void SessionHistory::setPresented(bool presented) {
    if (presented == isPresented_)
        return;
    isPresented_ = presented;
    note_.clear();
    check_.clear();
    nextTry_.stop();
    if (presented) {
        search_.clear();
        show();
        readAgain(this);
    } else {
        check_.cancel();
    }
    Q_EMIT changed();
}

void SessionHistory::setSearch(const QString& search) {
    search_ = search.toStdString();
    show();
    Q_EMIT changed();
}

/// The store may be at work for others. What is shown stays until it can be read.
QCoro::Task<> SessionHistory::readAgain(QPointer<SessionHistory> self) {
    const auto reading = onWorker([database = self->state_.database, wasUnread = self->isUnread_] {
        return historyOf(*database, wasUnread);
    });
    auto stored = co_await reading;
    if (!self)
        co_return;
    self->isUnread_ = !stored || stored->isPart;
    self->nextTry_.stop();
    if (self->isUnread_ && self->isPresented_)
        self->nextTry_.start();
    if (stored) {
        self->records_ = std::move(stored->records);
        self->setAside_ = std::move(stored->setAside);
        self->takeChecks();
        self->show();
    }
    Q_EMIT self->changed();
    if (!self->isUnread_)
        Q_EMIT self->read();
}

/// The store may get to know of a check later than we do.
void SessionHistory::takeChecks() {
    for (auto& record : records_) {
        const auto check = checks_.find(record.session.id);
        if (check != checks_.end() &&
            (!record.lastCheck || record.lastCheck->checkedAt < check->second.checkedAt))
            record.lastCheck = check->second;
    }
}

void SessionHistory::show() {
    if (!isPresented_)
        return;
    std::vector<SessionRow> rows;
    hasMore_ = false;
    for (const auto& record : records_) {
        auto row = rowOf(record);
        if (!hasAll((row.name + " " + row.facts).toStdString(), search_))
            continue;
        hasMore_ = rows.size() == kMostRows;
        if (hasMore_)
            break;
        rows.push_back(std::move(row));
    }
    RowChanges::bring(*this, rows_, std::move(rows));
}

SessionRow SessionHistory::rowOf(const HistoryRecord& record) const {
    const auto& session = record.session;
    const auto l10n = state_.l10n();
    const auto status = record.session.status;
    auto facts = Clock::mediumDateTime(session.startedAt, Language::locale(state_.language));
    const bool isHashed = status == OutcomeStatus::Hashed;
    const auto size =
        isHashed ? std::string() : PathSize::format(session.bytesCopied, state_.language);
    for (const auto& fact :
         {record.ekip, session.cameraLabel, l10n.fileCount(record.files), size}) {
        if (!fact.empty())
            facts += "  ·  " + Text::displayable(fact);
    }
    return {.sessionID = toQString(session.id),
            .name = toQString(isHashed ? Text::displayable(session.cardName)
                                       : pairName(session.cardName, session.destName)),
            .facts = toQString(facts),
            .verdict = toQString(verdict(status, l10n)),
            .isVerified = status == OutcomeStatus::Verified,
            .hasFailed = status == OutcomeStatus::Failed,
            .check = record.lastCheck ? toQString(verdictOf(*record.lastCheck, state_.language))
                                      : QString(),
            .isCheckGood = record.lastCheck && record.lastCheck->isGood(),
            .isCheckDoubtful = record.lastCheck && record.lastCheck->mayBeFromMemory,
            .chosen = session.id == chosenID_};
}

const HistoryRecord* SessionHistory::chosen() const {
    const auto found = std::find_if(records_.begin(), records_.end(), [&](const auto& record) {
        return record.session.id == chosenID_;
    });
    return found == records_.end() ? nullptr : &*found;
}

bool SessionHistory::wasCopied() const {
    const auto* session = chosen();
    return session && session->session.status != OutcomeStatus::Hashed;
}

QString SessionHistory::note() const {
    if (!note_.isEmpty())
        return note_;
    if (isUnread_)
        return toQString(state_.l10n().historyNotRead());
    // Else nobody knows why what was offloaded before is missing.
    if (!setAside_.empty())
        return toQString(state_.l10n().historySetAside(Text::legible(setAside_.native())));
    return {};
}

QString SessionHistory::rest() const {
    return hasMore_ ? toQString(state_.l10n().onlyLatestShown(kMostRows)) : QString();
}

void SessionHistory::choose(const QString& sessionID) {
    chosenID_ = sessionID.toStdString();
    note_.clear();
    check_.clear();
    show();
    Q_EMIT changed();
}

void SessionHistory::showReport() {
    if (const auto* session = chosen())
        openReport(this, std::filesystem::path(session->reportFolder) / ReportNames::standardPage);
}

void SessionHistory::showFolder() {
    if (wasCopied())
        openFolder(this, chosen()->session.sessionRoot);
}

void SessionHistory::verifyAgain() {
    if (wasCopied())
        check_.start(*chosen());
}

/// The archive may lie on a disk that takes its time. Sessions of older versions did not say where
/// their reports are.
QCoro::Task<> SessionHistory::openReport(QPointer<SessionHistory> self,
                                         std::filesystem::path page) {
    const auto looking = isThereLater(page);
    const bool isThere = co_await looking;
    if (!self)
        co_return;
    if (isThere && self->state_.surroundings.openFile)
        self->state_.surroundings.openFile(page);
    else
        self->reports_.reveal();
}

QCoro::Task<> SessionHistory::openFolder(QPointer<SessionHistory> self,
                                         std::filesystem::path folder) {
    const auto looking = isThereLater(folder);
    const bool isThere = co_await looking;
    if (!self)
        co_return;
    if (isThere && self->state_.surroundings.showFolder)
        self->state_.surroundings.showFolder(folder);
    self->note_ = isThere ? QString() : toQString(self->state_.l10n().sessionFolderGone());
    Q_EMIT self->changed();
}

} // namespace slatewise
