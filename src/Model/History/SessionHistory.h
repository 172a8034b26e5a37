#pragma once

#include "Model/Copying/CopyCheck.h"
#include "Model/ModelState.h"
#include "Model/QtText.h"
#include "Model/RowChanges.h"
#include "Model/Settings/ReportsFolder.h"
#include "Storage/StoreRecords.h"

#include <QAbstractListModel>
#include <QCoro/QCoroTask>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace slatewise {

/// One session of the history, ready to be shown.
struct SessionRow {
    Q_GADGET
    Q_PROPERTY(QString sessionID MEMBER sessionID)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString facts MEMBER facts)
    Q_PROPERTY(QString verdict MEMBER verdict)
    Q_PROPERTY(bool isVerified MEMBER isVerified)
    Q_PROPERTY(bool hasFailed MEMBER hasFailed)
    Q_PROPERTY(QString check MEMBER check)
    Q_PROPERTY(bool isCheckGood MEMBER isCheckGood)
    Q_PROPERTY(bool isCheckDoubtful MEMBER isCheckDoubtful)
    Q_PROPERTY(bool chosen MEMBER chosen)

public:
    QString sessionID;
    /// From which card to which disk; the card alone where it was only hashed, for no disk has
    /// anything of it.
    QString name;
    /// When, crew, camera, files and size.
    QString facts;
    QString verdict;
    bool isVerified = false;
    bool hasFailed = false;
    /// When the copy was read again, and what that showed; empty when it never was.
    QString check;
    bool isCheckGood = false;
    /// What was read may have come from memory.
    bool isCheckDoubtful = false;
    bool chosen = false;

    const QString& key() const { return sessionID; }
    friend bool operator==(const SessionRow&, const SessionRow&) = default;
};

/// The sessions of the store, latest first, and what can be done with the chosen one. The roles are
/// the properties of a `SessionRow`. GUI thread.
class SessionHistory : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isPresented READ isPresented WRITE setPresented NOTIFY changed)
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY changed)
    Q_PROPERTY(bool hasChosen READ hasChosen NOTIFY changed)
    Q_PROPERTY(bool canVerify READ wasCopied NOTIFY changed)
    Q_PROPERTY(bool canShowFolder READ wasCopied NOTIFY changed)
    Q_PROPERTY(QString note READ note NOTIFY changed)
    Q_PROPERTY(QString rest READ rest NOTIFY changed)
    Q_PROPERTY(bool isUnread READ isUnread NOTIFY changed)
    Q_PROPERTY(slatewise::CopyCheck* check READ check CONSTANT)

public:
    /// Both outlive this.
    SessionHistory(ModelState& state, ReportsFolder& reports);

    bool isPresented() const { return isPresented_; }
    /// The store is read each time, and no search is left from the time before.
    void setPresented(bool presented);
    QString search() const { return toQString(search_); }
    /// Shows the sessions that have every word of it in their card, disk, crew, camera or date.
    void setSearch(const QString& search);
    bool hasChosen() const { return chosen() != nullptr; }
    /// Whether a session is chosen that copied something: of a card that was only hashed there is
    /// no folder to be shown or read again.
    bool wasCopied() const;
    /// Why nothing came of what was asked for last, or why nothing new is shown, or nothing old.
    QString note() const;
    /// That there are more sessions than are shown; else empty.
    QString rest() const;
    bool isUnread() const { return isUnread_; }
    CopyCheck* check() { return &check_; }

    const std::vector<SessionRow>& rows() const { return rows_; }

    Q_INVOKABLE void choose(const QString& sessionID);
    Q_INVOKABLE void showReport();
    Q_INVOKABLE void showFolder();
    Q_INVOKABLE void verifyAgain();

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return RowChanges::value(rows_, index, role);
    }
    QHash<int, QByteArray> roleNames() const override {
        return RowChanges::roleNames<SessionRow>();
    }

Q_SIGNALS:
    void changed();
    /// What the store holds is shown.
    void read();

private:
    friend struct RowChanges;

    void show();
    void takeChecks();
    SessionRow rowOf(const HistoryRecord& record) const;
    const HistoryRecord* chosen() const;
    static QCoro::Task<> readAgain(QPointer<SessionHistory> self);
    static QCoro::Task<> openReport(QPointer<SessionHistory> self, std::filesystem::path page);
    static QCoro::Task<> openFolder(QPointer<SessionHistory> self, std::filesystem::path folder);

    ModelState& state_;
    ReportsFolder& reports_;
    CopyCheck check_;
    std::vector<HistoryRecord> records_;
    /// Where the history lies that this one was begun in place of, if there was one.
    std::filesystem::path setAside_;
    /// The latest check of each session since the start, whatever the store knows.
    std::map<std::string, CheckRecord> checks_;
    std::vector<SessionRow> rows_;
    std::string search_;
    std::string chosenID_;
    QString note_;
    /// Runs while the store cannot be read.
    QTimer nextTry_;
    /// The store could not be read the last time, or some of it is not in its file yet.
    bool isUnread_ = false;
    bool isPresented_ = false;
    bool hasMore_ = false;
};

} // namespace slatewise
