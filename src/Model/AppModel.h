#pragma once

#include "Batch/Batch.h"
#include "Batch/ProgressTexts.h"
#include "Language/L10n.h"
#include "Model/CardUnits.h"
#include "Model/ContentSizes.h"
#include "Model/FolderPresence.h"
#include "Model/PickedFolders.h"
#include "Model/ReportMigration.h"
#include "Model/Surroundings.h"
#include "Model/UnitCatalog.h"
#include "Model/VolumeBoard.h"
#include "Model/VolumeListModel.h"
#include "Offload/FolderTemplate.h"
#include "Service/OutboxDrainer.h"
#include "Service/ServiceProfileFile.h"
#include "Storage/StoreRecords.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <set>
#include <string>

namespace slatewise {

/// The application to its views: all they show and all a user can do. One object, made once, on the
/// GUI thread; it lives as long as the process.
///
/// A thin face. What it knows is kept by small plain types (`VolumeBoard`, `CardUnits`,
/// `UnitCatalog`, `ContentSizes`, ...), which it asks and shows. After each operation `publish`
/// compares what is to be shown with what is shown, and only what differs is signalled.
///
/// Texts go to views as they are to be shown. A volume is named by the `volumeID` of its row.
class AppModel : public QObject, private BatchListener {
    Q_OBJECT

    Q_PROPERTY(QVariantMap l10n READ l10nTexts NOTIFY languageChanged)
    Q_PROPERTY(QString language READ languageCode WRITE setLanguageCode NOTIFY languageChanged)
    Q_PROPERTY(QVariantList languages READ languages CONSTANT)
    Q_PROPERTY(QString appName READ appName CONSTANT)
    Q_PROPERTY(QString appVersion READ appVersion CONSTANT)
    Q_PROPERTY(QString websiteLabel READ websiteLabel CONSTANT)
    Q_PROPERTY(QString websiteURL READ websiteURL CONSTANT)
    Q_PROPERTY(QString saasLine READ saasLine NOTIFY saasLineChanged)

    Q_PROPERTY(slatewise::VolumeListModel* cards READ cards CONSTANT)
    Q_PROPERTY(slatewise::VolumeListModel* destinations READ destinations CONSTANT)
    Q_PROPERTY(QString sourceTotalText READ sourceTotalText NOTIFY selectionChanged)
    Q_PROPERTY(bool canCopy READ canCopy NOTIFY selectionChanged)

    Q_PROPERTY(QVariantList sets READ sets NOTIFY unitsChanged)
    Q_PROPERTY(QVariantList units READ units NOTIFY unitsChanged)
    Q_PROPERTY(QString unitTitle READ unitTitle NOTIFY selectionChanged)
    Q_PROPERTY(QString newSetName READ newSetName WRITE setNewSetName NOTIFY newNamesChanged)
    Q_PROPERTY(QString newUnitName READ newUnitName WRITE setNewUnitName NOTIFY newNamesChanged)

    Q_PROPERTY(double progressFraction READ progressFraction NOTIFY progressChanged)
    Q_PROPERTY(QString progressPercentText READ progressPercentText NOTIFY progressChanged)
    Q_PROPERTY(QString progressTitle READ progressTitle NOTIFY progressChanged)
    Q_PROPERTY(bool progressDidSucceed READ progressDidSucceed NOTIFY progressChanged)
    Q_PROPERTY(bool progressDidFail READ progressDidFail NOTIFY progressChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY progressChanged)

    Q_PROPERTY(bool isAdvancedPresented READ isAdvancedPresented WRITE setAdvancedPresented NOTIFY
                   advancedPresentedChanged)
    Q_PROPERTY(QString projectName READ projectName WRITE setProjectName NOTIFY settingsChanged)
    Q_PROPERTY(bool ejectAfterSuccess READ ejectAfterSuccess WRITE setEjectAfterSuccess NOTIFY
                   settingsChanged)
    Q_PROPERTY(bool verifyOnly READ verifyOnly WRITE setVerifyOnly NOTIFY settingsChanged)
    Q_PROPERTY(QString folderTemplate READ folderTemplate NOTIFY settingsChanged)
    Q_PROPERTY(QString folderTemplatePreview READ folderTemplatePreview NOTIFY
                   folderTemplatePreviewChanged)
    Q_PROPERTY(QVariantList defaultSkipNames READ defaultSkipNames NOTIFY settingsChanged)
    Q_PROPERTY(QStringList extraExcludes READ extraExcludes NOTIFY settingsChanged)
    Q_PROPERTY(QString reportsFolderDisplay READ reportsFolderDisplay NOTIFY settingsChanged)
    Q_PROPERTY(bool isDefaultReportsFolder READ isDefaultReportsFolder NOTIFY settingsChanged)
    Q_PROPERTY(QVariantList templateTokens READ templateTokens NOTIFY languageChanged)
    Q_PROPERTY(QVariantList templateSeparators READ templateSeparators NOTIFY languageChanged)
    Q_PROPERTY(QVariantList templatePresets READ templatePresets NOTIFY languageChanged)

public:
    /// Reads what is stored, opens the store, takes up the volumes, and begins to watch them.
    /// Nothing waits for the network. `surroundings` must have settings; all else may be left out.
    explicit AppModel(Surroundings surroundings, QObject* parent = nullptr);
    ~AppModel() override;

    // For views.

    QVariantMap l10nTexts() const;
    QString languageCode() const;
    void setLanguageCode(const QString& code);
    static QVariantList languages();
    static QString appName();
    static QString appVersion();
    static QString websiteLabel();
    static QString websiteURL();
    QString saasLine() const { return saasLine_; }

    VolumeListModel* cards() { return &cardRows_; }
    VolumeListModel* destinations() { return &destinationRows_; }
    QString sourceTotalText() const { return shownSelection_.sourceTotalText; }
    bool canCopy() const { return shownSelection_.canCopy; }

    QVariantList sets() const { return shownUnits_.sets; }
    QVariantList units() const { return shownUnits_.units; }
    QString unitTitle() const { return shownSelection_.unitTitle; }
    QString newSetName() const { return newSetName_; }
    void setNewSetName(const QString& name);
    QString newUnitName() const { return newUnitName_; }
    void setNewUnitName(const QString& name);

    double progressFraction() const { return shownProgress_.fraction; }
    QString progressPercentText() const { return shownProgress_.percentText; }
    QString progressTitle() const { return shownProgress_.title; }
    bool progressDidSucceed() const { return shownProgress_.didSucceed; }
    bool progressDidFail() const { return shownProgress_.didFail; }
    bool isBusy() const { return shownProgress_.isBusy; }

    bool isAdvancedPresented() const { return isAdvancedPresented_; }
    void setAdvancedPresented(bool presented);
    QString projectName() const;
    void setProjectName(const QString& name);
    bool ejectAfterSuccess() const { return settings_.ejectAfterSuccess; }
    void setEjectAfterSuccess(bool eject);
    bool verifyOnly() const { return settings_.verifyOnly; }
    void setVerifyOnly(bool verifyOnly);
    QString folderTemplate() const;
    QString folderTemplatePreview() const { return folderTemplatePreview_; }
    QVariantList defaultSkipNames() const;
    QStringList extraExcludes() const;
    QString reportsFolderDisplay() const { return reportsFolderDisplay_; }
    bool isDefaultReportsFolder() const;
    QVariantList templateTokens() const;
    QVariantList templateSeparators() const;
    QVariantList templatePresets() const;

    Q_INVOKABLE void toggleCard(const QString& volumeID);
    Q_INVOKABLE void focusCard(const QString& volumeID);
    Q_INVOKABLE void removeCard(const QString& volumeID);
    Q_INVOKABLE void clearAllCards();
    Q_INVOKABLE void toggleDestination(const QString& volumeID);
    Q_INVOKABLE void focusDestination(const QString& volumeID);
    Q_INVOKABLE void removeDestination(const QString& volumeID);
    Q_INVOKABLE void clearAllDestinations();
    /// Any mounted volume may be named, listed or not.
    Q_INVOKABLE void treatAsCard(const QString& volumeID);
    Q_INVOKABLE void treatAsDestination(const QString& volumeID);

    Q_INVOKABLE void tapUnit(const QString& name);
    Q_INVOKABLE void tapSet(const QString& setID);
    Q_INVOKABLE void addUnitFromField();
    Q_INVOKABLE void addSetFromField();
    Q_INVOKABLE void deleteSelectedUnit();
    Q_INVOKABLE void deleteSelectedSet();

    Q_INVOKABLE void startCopy();
    Q_INVOKABLE void cancelCopy();

    Q_INVOKABLE void pickCardFolder();
    Q_INVOKABLE void pickDestinationFolder();
    Q_INVOKABLE void pickReportsFolder();
    Q_INVOKABLE void resetReportsFolder();
    Q_INVOKABLE void revealReportsFolder();

    Q_INVOKABLE void addSkipName(const QString& name);
    Q_INVOKABLE void removeSkipName(const QString& name);
    Q_INVOKABLE void setDefaultSkip(const QString& name, bool skipped);
    Q_INVOKABLE void saveSettings();

    /// What an example path is made of with what is selected now; for `expandTemplate`, which then
    /// does not follow a card that is pulled while a template is being written.
    Q_INVOKABLE QVariantMap templateExample() const;
    /// The path that a template leads to today, with the names of `example`.
    Q_INVOKABLE QString expandTemplate(const QString& text, const QVariantMap& example) const;
    Q_INVOKABLE QString normalizedTemplate(const QString& text) const;
    Q_INVOKABLE QString defaultTemplate() const;
    Q_INVOKABLE void saveTemplate(const QString& text);

    // For programs and tests.

    AppLanguage language() const { return language_; }
    L10n l10n() const { return L10n(language_); }
    const OffloadSettings& settings() const { return settings_; }
    const OffloadPhase& phase() const { return phase_; }
    const BatchPosition& batchPosition() const { return batchPosition_; }
    const VolumeBoard& board() const { return board_; }
    const CardUnits& cardUnits() const { return cardUnits_; }
    const UnitCatalog& unitCatalog() const { return unitCatalog_; }
    const ContentSizes& contentSizes() const { return contentSizes_; }
    const std::vector<SessionRecord>& recentSessions() const { return recentSessions_; }
    bool allCardsHaveUnits() const;
    /// The unit that an edit works on: the target card's, else the one tapped last.
    std::string activeUnitForEdit() const;

    /// As if picked by the user. Done when the folder is listed and ticked.
    QCoro::Task<> addCardFolder(std::filesystem::path folder);
    QCoro::Task<> addDestinationFolder(std::filesystem::path folder);

    /// Says at once which unit and which crew a card belongs to, for who asks no user.
    void labelCard(const QString& volumeID, const std::string& camera, const std::string& ekip);

    /// Told of every batch beside the views. Outlives the model; null for none.
    void setBatchListener(BatchListener* listener) { batchListener_ = listener; }

    /// Brings the lists up to date with what is mounted. May be called at any time.
    void applyVolumes();

    /// Shows the folder "reports" that lies with a session's footage, else the archive.
    void revealReports(const SessionRecord& session);

Q_SIGNALS:
    void languageChanged();
    void saasLineChanged();
    void selectionChanged();
    void unitsChanged();
    void newNamesChanged();
    void progressChanged();
    void advancedPresentedChanged();
    void settingsChanged();
    void folderTemplatePreviewChanged();
    /// Of one press of the button, and all that follows it.
    void batchFinished();

private:
    struct ShownSelection {
        QString sourceTotalText;
        QString unitTitle;
        bool canCopy = false;
        friend bool operator==(const ShownSelection&, const ShownSelection&) = default;
    };
    struct ShownUnits {
        QVariantList sets;
        QVariantList units;
        friend bool operator==(const ShownUnits&, const ShownUnits&) = default;
    };
    struct ShownProgress {
        double fraction = 0;
        QString percentText;
        QString title;
        bool didSucceed = false;
        bool didFail = false;
        bool isBusy = false;
        friend bool operator==(const ShownProgress&, const ShownProgress&) = default;
    };

    /// Shows what has changed.
    void publish();
    void publishProgress();
    void publishVolumes();
    void publishSelection();
    void publishUnits();
    void publishPreview();

    struct FirstLook;
    void takeUpVolumes();
    void beginWith(const FirstLook& look);
    static QCoro::Task<> beginLater(QPointer<AppModel> model, QCoro::Task<> looking,
                                    std::shared_ptr<FirstLook> look);
    QCoro::Task<ClassifiedVolume> folderVolume(std::filesystem::path folder, VolumeKind kind) const;
    void useCardFolder(const ClassifiedVolume& folder);
    void useDestinationFolder(const ClassifiedVolume& folder);
    void restoreReportsFolder();
    void persistDestIDs();
    void persistPickedFolders();
    void refreshContentSizes(const VolumeIDs& forceIDs);
    void settingsEdited();
    void skipNamesEdited();
    void updateReportsFolder();

    // Of a batch.
    void batchBegan(const BatchPlan& plan) override;
    void pairBegan(const BatchPair& pair) override;
    void phaseChanged(const OffloadPhase& phase) override;
    void problemFound(const OffloadProblem& problem) override;
    void pairEnded(const BatchPair& pair, const PairResult& result) override;
    void batchEnded(const BatchResult& result) override;
    BatchPlan batchPlan() const;
    bool everyCardHasItsUnit(const BatchPlan& plan);
    void fail(const std::string& message);
    static QCoro::Task<> showWhatIsLeft(QPointer<AppModel> model,
                                        std::optional<std::filesystem::path> report);

    /// Empty when they cannot be read. Blocks while the store is at work; any thread.
    static std::optional<std::vector<SessionRecord>> latestOf(const AppDatabase& database);
    void refreshSessions();
    void migrateReportFolderNames();
    static QCoro::Task<> showArchive(QPointer<AppModel> model);
    static QCoro::Task<> showReportsOf(QPointer<AppModel> model, std::filesystem::path reports);
    void serviceProfileChanged();
    void updateSaasLine();
    void notifyService(const ClassifiedVolume& newCard) const;
    void announce(const std::vector<ClassifiedVolume>& newCards);
    void useReportsFolder(const std::filesystem::path& folder);
    static QCoro::Task<> measureAll(QPointer<AppModel> model, MeasuringJob job);

    void setSelectedCamera(const std::string& unit);
    std::string selectedCamera() const;
    void assignCurrentEkip(const std::optional<std::string>& card);
    FolderTemplate::Values templateValues() const;

    Surroundings surroundings_;
    UserDefaults& defaults_;
    AppLanguage language_;
    OffloadSettings settings_;
    UnitCatalog unitCatalog_;
    std::shared_ptr<AppDatabase> database_;
    OutboxDrainer drainer_;
    ServiceProfileFile serviceProfile_;
    ReportMigration reportMigration_;
    PickedFolderStore pickedFolders_;
    FolderPresence folderPresence_;

    VolumeBoard board_;
    CardUnits cardUnits_;
    ContentSizes contentSizes_;
    std::string highlightedUnit_;
    OffloadPhase phase_;
    BatchPosition batchPosition_;
    std::shared_ptr<Batch> batch_;
    BatchListener* batchListener_ = nullptr;
    std::vector<SessionRecord> recentSessions_;
    QString saasLine_;
    QString newSetName_;
    QString newUnitName_;
    bool isAdvancedPresented_ = false;
    QString reportsFolderDisplay_;

    VolumeListModel cardRows_;
    VolumeListModel destinationRows_;
    ShownSelection shownSelection_;
    ShownUnits shownUnits_;
    ShownProgress shownProgress_;
    QString folderTemplatePreview_;
};

} // namespace slatewise
