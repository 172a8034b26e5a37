#include "Model/AppModel.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Platform/AppInfo.h"
#include "Platform/Worker.h"
#include "Service/DirectSaaSClient.h"
#include "Storage/AppLog.h"
#include "Storage/SupportPaths.h"

namespace slatewise {

namespace {

constexpr int kRecentSessions = 20;

/// Empty when they cannot be read: history is nothing an offload depends on. Blocks while the store
/// is at work; any thread.
std::optional<std::vector<SessionRecord>> latestOf(const AppDatabase& database) {
    try {
        return database.recentSessions(kRecentSessions);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

AppModel::AppModel(Surroundings surroundings, QObject* parent)
    : QObject(parent), state_(std::move(surroundings)), drainer_(*state_.database),
      serviceProfile_(SupportPaths::applicationSupport()), reports_(state_), volumes_(state_),
      cards_(VolumeSide::Card, state_, volumes_),
      destinations_(VolumeSide::Destination, state_, volumes_), otherVolumes_(state_, volumes_),
      units_(state_), settings_(state_, volumes_), pathTemplate_(state_),
      history_(state_, reports_), batch_(state_, volumes_, serviceProfile_) {
    serviceProfile_.onChange = [this] {
        serviceProfileChanged();
    };
    connect(&volumes_, &VolumeFollower::cardAppeared, this, &AppModel::notifyService);
    connect(&volumes_, &VolumeFollower::destinationListed, &reports_,
            &ReportsFolder::migrateDiskOnce);
    connect(&batch_, &BatchControl::finished, this, [this] {
        refreshAfterBatch(this);
        volumes_.measureCardsAnew();
    });
    reports_.restore();
    showLanguages();
    updateSaasLine();
    state_.publish();
    volumes_.begin();
    refreshSessions(this);
    reports_.migrateArchive();
    for (const auto& destination : state_.board.list(VolumeSide::Destination))
        reports_.migrateDisk(destination.facts.mountPoint);
    AppLog::prune(SupportPaths::logsDirectory(), Clock::now());
    AppLog::append("Uygulama açıldı v" + std::string(AppInfo::version));
    drainer_.drain(serviceProfile_.current());
}

QString AppModel::appName() {
    return toQString(AppInfo::name);
}

QString AppModel::appVersion() {
    return toQString(AppInfo::version);
}

QString AppModel::websiteLabel() {
    return toQString(AppInfo::websiteLabel);
}

QString AppModel::websiteURL() {
    return toQString(AppInfo::websiteURL);
}

QString AppModel::languageCode() const {
    return toQString(Language::rawValue(state_.language));
}

void AppModel::setLanguageCode(const QString& code) {
    for (const auto language : Language::allCases) {
        if (code != toQString(Language::rawValue(language)) || language == state_.language)
            continue;
        state_.language = language;
        Language::persist(language, state_.defaults);
        showLanguages();
        updateSaasLine();
        Q_EMIT languageChanged();
        state_.publish();
        return;
    }
}

void AppModel::showLanguages() {
    std::vector<Choice> rows;
    rows.reserve(Language::allCases.size());
    for (const auto language : Language::allCases) {
        rows.push_back({toQString(Language::rawValue(language)),
                        toQString(Language::displayName(language)),
                        {},
                        language == state_.language});
    }
    languages_.setRows(std::move(rows));
}

void AppModel::serviceProfileChanged() {
    updateSaasLine();
    drainer_.drain(serviceProfile_.current());
}

void AppModel::updateSaasLine() {
    const auto& profile = serviceProfile_.current();
    const auto l10n = state_.l10n();
    const auto& refusal = serviceProfile_.refusal();
    auto line = toQString(profile   ? l10n.connected(profile->accountID, profile->saasAPIURL)
                          : refusal ? refusal->text(l10n)
                                    : l10n.standalone());
    if (line == saasLine_)
        return;
    saasLine_ = std::move(line);
    Q_EMIT saasLineChanged();
}

void AppModel::notifyService(const std::string& cardName) const {
    if (const auto& profile = serviceProfile_.current())
        DirectSaaSClient{.profile = *profile, .limits = {}}.notifyDetected(cardName);
}

/// The store may be at work for others, for as long as it likes: of several answers only the one to
/// the last question is new.
QCoro::Task<> AppModel::refreshSessions(QPointer<AppModel> self) {
    const auto question = ++self->askedForSessions_;
    const auto reading =
        onWorker([database = self->state_.database] { return latestOf(*database); });
    auto sessions = co_await reading;
    if (self && sessions && question == self->askedForSessions_)
        self->recentSessions_ = std::move(*sessions);
}

QCoro::Task<> AppModel::refreshAfterBatch(QPointer<AppModel> self) {
    const auto refreshing = refreshSessions(self);
    co_await refreshing;
    if (self)
        Q_EMIT self->recentSessionsRead();
}

} // namespace slatewise
