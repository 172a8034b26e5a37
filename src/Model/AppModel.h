#pragma once

#include "Model/ChoiceListModel.h"
#include "Model/Copying/BatchControl.h"
#include "Model/History/SessionHistory.h"
#include "Model/ModelState.h"
#include "Model/Settings/PathTemplate.h"
#include "Model/Settings/ReportsFolder.h"
#include "Model/Settings/SettingsForm.h"
#include "Model/Units/UnitPicker.h"
#include "Model/Volumes/OtherVolumes.h"
#include "Model/Volumes/VolumeFollower.h"
#include "Model/Volumes/VolumeListModel.h"
#include "Service/OutboxDrainer.h"
#include "Service/ServiceProfileFile.h"
#include "Storage/StoreRecords.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

namespace slatewise {

/// The application to its views: all they show and all a user can do, in one object for each part
/// of it. Made once, on the GUI thread; lives as long as the process, and its objects with it.
///
/// What is known is in one `ModelState`; the objects show it and change it. Texts go to views as
/// they are to be shown.
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString appName READ appName CONSTANT)
    Q_PROPERTY(QString appVersion READ appVersion CONSTANT)
    Q_PROPERTY(QString websiteLabel READ websiteLabel CONSTANT)
    Q_PROPERTY(QString websiteURL READ websiteURL CONSTANT)
    Q_PROPERTY(QString language READ languageCode WRITE setLanguageCode NOTIFY languageChanged)
    Q_PROPERTY(slatewise::ChoiceListModel* languages READ languages CONSTANT)
    Q_PROPERTY(QString saasLine READ saasLine NOTIFY saasLineChanged)

    Q_PROPERTY(slatewise::VolumeListModel* cards READ cards CONSTANT)
    Q_PROPERTY(slatewise::VolumeListModel* destinations READ destinations CONSTANT)
    Q_PROPERTY(slatewise::OtherVolumes* otherVolumes READ otherVolumes CONSTANT)
    Q_PROPERTY(slatewise::UnitPicker* units READ units CONSTANT)
    Q_PROPERTY(slatewise::BatchControl* batch READ batch CONSTANT)
    Q_PROPERTY(slatewise::SettingsForm* settings READ settings CONSTANT)
    Q_PROPERTY(slatewise::ReportsFolder* reports READ reports CONSTANT)
    Q_PROPERTY(slatewise::SessionHistory* history READ history CONSTANT)
    Q_PROPERTY(slatewise::PathTemplate* pathTemplate READ pathTemplate CONSTANT)

public:
    /// Reads what is stored, opens the store, takes up the volumes, and begins to watch them.
    /// Nothing waits for the network. `surroundings` must have settings; all else may be left out.
    explicit AppModel(Surroundings surroundings, QObject* parent = nullptr);

    static QString appName();
    static QString appVersion();
    static QString websiteLabel();
    static QString websiteURL();
    QString languageCode() const;
    /// Nothing for a code that no language has.
    void setLanguageCode(const QString& code);
    ChoiceListModel* languages() { return &languages_; }
    /// How it stands with the reporting service.
    QString saasLine() const { return saasLine_; }

    VolumeListModel* cards() { return &cards_; }
    VolumeListModel* destinations() { return &destinations_; }
    OtherVolumes* otherVolumes() { return &otherVolumes_; }
    UnitPicker* units() { return &units_; }
    BatchControl* batch() { return &batch_; }
    SettingsForm* settings() { return &settings_; }
    ReportsFolder* reports() { return &reports_; }
    SessionHistory* history() { return &history_; }
    PathTemplate* pathTemplate() { return &pathTemplate_; }

    /// For programs and tests.
    const ModelState& state() const { return state_; }
    VolumeFollower& volumes() { return volumes_; }
    /// The latest, read at the start and after each batch; empty until they are.
    const std::vector<SessionRecord>& recentSessions() const { return recentSessions_; }

Q_SIGNALS:
    void languageChanged();
    void saasLineChanged();
    /// After each batch, when nothing of it is left to be done.
    void recentSessionsRead();

private:
    void showLanguages();
    void serviceProfileChanged();
    void updateSaasLine();
    void notifyService(const std::string& cardName) const;
    static QCoro::Task<> refreshSessions(QPointer<AppModel> self);
    static QCoro::Task<> refreshAfterBatch(QPointer<AppModel> self);

    ModelState state_;
    OutboxDrainer drainer_;
    ServiceProfileFile serviceProfile_;
    QString saasLine_;
    ChoiceListModel languages_;
    std::vector<SessionRecord> recentSessions_;
    int askedForSessions_ = 0;

    ReportsFolder reports_;
    VolumeFollower volumes_;
    VolumeListModel cards_;
    VolumeListModel destinations_;
    OtherVolumes otherVolumes_;
    UnitPicker units_;
    SettingsForm settings_;
    PathTemplate pathTemplate_;
    SessionHistory history_;
    BatchControl batch_;
};

} // namespace slatewise
