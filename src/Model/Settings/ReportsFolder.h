#pragma once

#include "Model/ModelState.h"
#include "Model/Settings/ReportMigration.h"
#include "Model/Volumes/PickedFolders.h"
#include "Storage/StoreRecords.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

#include <filesystem>

namespace slatewise {

/// Where the report sets of all sessions are kept on this machine: the user's folder, or the
/// default one. GUI thread.
class ReportsFolder : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString path READ path NOTIFY changed)
    Q_PROPERTY(bool isDefault READ isDefault NOTIFY changed)

public:
    /// `state` outlives this.
    explicit ReportsFolder(ModelState& state);

    /// Takes up the folder that was chosen on an earlier day.
    void restore();

    QString path() const { return path_; }
    bool isDefault() const;

    Q_INVOKABLE void pick();
    /// Back to the default folder. What lies in the other one stays there.
    Q_INVOKABLE void reset();
    /// In the user's file manager.
    Q_INVOKABLE void reveal();
    /// The folder "reports" that lies with a session's footage, else this one.
    void revealReports(const SessionRecord& session);

    /// Gives report folders of older versions the names of today.
    void migrateDisk(std::filesystem::path mountPoint) {
        migration_.migrateDisk(std::move(mountPoint));
    }
    void migrateDiskOnce(const std::filesystem::path& mountPoint) {
        migration_.migrateDiskOnce(mountPoint);
    }
    void migrateArchive();

Q_SIGNALS:
    void changed();

private:
    void use(const std::filesystem::path& folder);
    void show();
    static QCoro::Task<> showArchive(QPointer<ReportsFolder> self);
    static QCoro::Task<> showReportsOf(QPointer<ReportsFolder> self, std::filesystem::path reports);

    ModelState& state_;
    PickedFolderStore remembered_;
    ReportMigration migration_;
    QString path_;
};

} // namespace slatewise
