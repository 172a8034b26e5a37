#include "Model/AppModel.h"

#include "Model/DestinationMemory.h"
#include "Model/FolderChooser.h"
#include "Model/QtText.h"
#include "Platform/AppInfo.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Reports/ReportFolder.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

namespace slatewise {

namespace {

constexpr int kRecentSessions = 20;

std::shared_ptr<AppDatabase> openedStore(const Surroundings& surroundings) {
    if (surroundings.openStore)
        return surroundings.openStore();
    return std::make_shared<AppDatabase>(AppDatabase::inMemory());
}

} // namespace

AppModel::AppModel(Surroundings surroundings, QObject* parent)
    : QObject(parent), surroundings_(std::move(surroundings)), defaults_(*surroundings_.defaults),
      language_(Language::load(defaults_)), settings_(OffloadSettings::load(defaults_)),
      unitCatalog_(UnitCatalog::load(defaults_)), database_(openedStore(surroundings_)),
      drainer_(*database_), serviceProfile_(SupportPaths::applicationSupport()),
      pickedFolders_(defaults_) {
    serviceProfile_.onChange = [this] {
        serviceProfileChanged();
    };
    restoreReportsFolder();
    updateSaasLine();
    takeUpVolumes();
    refreshSessions();
    migrateReportFolderNames();
    AppLog::prune(SupportPaths::logsDirectory(), Clock::now());
    AppLog::append("Uygulama açıldı v" + std::string(AppInfo::version));
    drainer_.drain(serviceProfile_.current());
}

AppModel::~AppModel() {
    if (batch_)
        batch_->abandon();
}

std::optional<std::vector<SessionRecord>> AppModel::latestOf(const AppDatabase& database) {
    try {
        return database.recentSessions(kRecentSessions);
    } catch (const std::exception&) {
        // The list stays as it is: history is nothing an offload depends on.
        return std::nullopt;
    }
}

void AppModel::refreshSessions() {
    if (auto sessions = latestOf(*database_))
        recentSessions_ = std::move(*sessions);
}

QString AppModel::languageCode() const {
    return toQString(Language::rawValue(language_));
}

void AppModel::setLanguageCode(const QString& code) {
    for (const auto language : Language::allCases) {
        if (code != toQString(Language::rawValue(language)) || language == language_)
            continue;
        language_ = language;
        Language::persist(language, defaults_);
        updateSaasLine();
        Q_EMIT languageChanged();
        publish();
        return;
    }
}

void AppModel::setAdvancedPresented(bool presented) {
    if (presented == isAdvancedPresented_)
        return;
    isAdvancedPresented_ = presented;
    Q_EMIT advancedPresentedChanged();
}

QString AppModel::projectName() const {
    return toQString(settings_.projectName);
}

void AppModel::setProjectName(const QString& name) {
    settings_.projectName = name.toStdString();
    settingsEdited();
}

void AppModel::setEjectAfterSuccess(bool eject) {
    settings_.ejectAfterSuccess = eject;
    settingsEdited();
}

void AppModel::setVerifyOnly(bool verifyOnly) {
    settings_.verifyOnly = verifyOnly;
    settingsEdited();
}

QString AppModel::folderTemplate() const {
    return toQString(settings_.folderTemplate);
}

void AppModel::addSkipName(const QString& name) {
    const auto before = settings_.skipNames();
    settings_.addExclude(name.toStdString());
    // Measuring all cards anew may take minutes.
    if (settings_.skipNames() != before)
        skipNamesEdited();
}

void AppModel::removeSkipName(const QString& name) {
    settings_.removeExclude(name.toStdString());
    skipNamesEdited();
}

void AppModel::setDefaultSkip(const QString& name, bool skipped) {
    settings_.setDefaultSkipped(name.toStdString(), skipped);
    skipNamesEdited();
}

void AppModel::saveSettings() {
    settings_.save(defaults_);
}

QString AppModel::normalizedTemplate(const QString& text) const {
    return toQString(FolderTemplate::normalize(text.toStdString()));
}

QString AppModel::defaultTemplate() const {
    return toQString(FolderTemplate::defaultTemplate);
}

void AppModel::saveTemplate(const QString& text) {
    settings_.folderTemplate = FolderTemplate::normalize(text.toStdString());
    saveSettings();
    settingsEdited();
}

bool AppModel::isDefaultReportsFolder() const {
    return Text::trimmed(settings_.outputFolderPath).empty();
}

void AppModel::pickReportsFolder() {
    if (!surroundings_.folderChooser)
        return;
    surroundings_.folderChooser->choose(std::string(l10n().pickReportsFolder()),
                                        std::string(l10n().use()),
                                        [model = QPointer(this)](auto folder) {
                                            if (model && folder)
                                                model->useReportsFolder(*folder);
                                        });
}

void AppModel::useReportsFolder(const std::filesystem::path& folder) {
    settings_.outputFolderPath = folder.native();
    saveSettings();
    pickedFolders_.saveReportsFolder(folder);
    reportMigration_.migrate(SupportPaths::reportsArchivePath(settings_));
    updateReportsFolder();
    settingsEdited();
    AppLog::append("Rapor klasörü: " + folder.native());
}

void AppModel::resetReportsFolder() {
    settings_.outputFolderPath.clear();
    saveSettings();
    pickedFolders_.saveReportsFolder(std::nullopt);
    updateReportsFolder();
    settingsEdited();
}

void AppModel::revealReportsFolder() {
    showArchive(this);
}

/// Made by then, so that there is something to show.
QCoro::Task<> AppModel::showArchive(QPointer<AppModel> model) {
    const auto making =
        onWorker([settings = model->settings_] { return SupportPaths::reportsArchive(settings); });
    const auto archive = co_await making;
    if (model && model->surroundings_.showFolder)
        model->surroundings_.showFolder(archive);
}

void AppModel::revealReports(const SessionRecord& session) {
    showReportsOf(this, std::filesystem::path(session.sessionRoot) / "reports");
}

/// The session's disk may be gone, or take its time.
QCoro::Task<> AppModel::showReportsOf(QPointer<AppModel> model, std::filesystem::path reports) {
    const auto looking = onWorker([reports] { return FileSystem::exists(reports); });
    const bool isThere = co_await looking;
    if (!model)
        co_return;
    if (isThere && model->surroundings_.showFolder)
        model->surroundings_.showFolder(reports);
    else
        model->revealReportsFolder();
}

void AppModel::migrateReportFolderNames() {
    reportMigration_.migrate(SupportPaths::reportsArchivePath(settings_));
    for (const auto& destination : board_.lists().destinations)
        reportMigration_.migrate(
            ReportFolder::destinationReportsRoot(destination.facts.mountPoint));
}

void AppModel::updateReportsFolder() {
    reportsFolderDisplay_ = toQString(SupportPaths::reportsArchivePath(settings_).native());
}

void AppModel::settingsEdited() {
    Q_EMIT settingsChanged();
    publish();
}

void AppModel::skipNamesEdited() {
    saveSettings();
    refreshContentSizes(idsOf(board_.lists().cards));
    settingsEdited();
}

} // namespace slatewise
