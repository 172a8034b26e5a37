#include "Model/Settings/ReportsFolder.h"

#include "Language/L10n.h"
#include "Model/FolderChooser.h"
#include "Model/QtText.h"
#include "Model/Volumes/FolderPresence.h"
#include "Offload/ReportNames.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

namespace slatewise {

ReportsFolder::ReportsFolder(ModelState& state) : state_(state), remembered_(state.defaults) {}

void ReportsFolder::restore() {
    const auto folder = remembered_.storedReportsFolder();
    if (folder && FolderPresence().isThere(*folder) &&
        Text::trimmed(state_.settings.outputFolderPath).empty())
        state_.settings.outputFolderPath = folder->native();
    show();
}

bool ReportsFolder::isDefault() const {
    return Text::trimmed(state_.settings.outputFolderPath).empty();
}

void ReportsFolder::pick() {
    if (!state_.surroundings.folderChooser)
        return;
    const auto l10n = state_.l10n();
    state_.surroundings.folderChooser->choose(std::string(l10n.pickReportsFolder()),
                                              std::string(l10n.use()),
                                              [self = QPointer(this)](auto folder) {
                                                  if (self && folder)
                                                      self->use(*folder);
                                              });
}

void ReportsFolder::use(const std::filesystem::path& folder) {
    state_.settings.outputFolderPath = folder.native();
    state_.settings.save(state_.defaults);
    remembered_.saveReportsFolder(folder);
    migrateArchive();
    show();
    AppLog::append("Rapor klasörü: " + folder.native());
}

void ReportsFolder::reset() {
    state_.settings.outputFolderPath.clear();
    state_.settings.save(state_.defaults);
    remembered_.saveReportsFolder(std::nullopt);
    show();
}

void ReportsFolder::reveal() {
    showArchive(this);
}

/// Made by then, so that there is something to show.
QCoro::Task<> ReportsFolder::showArchive(QPointer<ReportsFolder> self) {
    const auto making = onWorker(
        [settings = self->state_.settings] { return SupportPaths::reportsArchive(settings); });
    const auto archive = co_await making;
    if (self && self->state_.surroundings.showFolder)
        self->state_.surroundings.showFolder(archive);
}

void ReportsFolder::revealReports(const SessionRecord& session) {
    showReportsOf(this, std::filesystem::path(session.sessionRoot) / ReportNames::folder);
}

/// The session's disk may be gone, or take its time.
QCoro::Task<> ReportsFolder::showReportsOf(QPointer<ReportsFolder> self,
                                           std::filesystem::path reports) {
    const auto looking = isThereLater(reports);
    const bool isThere = co_await looking;
    if (!self)
        co_return;
    if (isThere && self->state_.surroundings.showFolder)
        self->state_.surroundings.showFolder(reports);
    else
        self->reveal();
}

void ReportsFolder::migrateArchive() {
    migration_.migrateArchive(SupportPaths::reportsArchivePath(state_.settings));
}

void ReportsFolder::show() {
    path_ = toQString(SupportPaths::reportsArchivePath(state_.settings).native());
    Q_EMIT changed();
}

} // namespace slatewise
