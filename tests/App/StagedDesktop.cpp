#include "App/StagedDesktop.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace slatewise::test {

namespace {

constexpr auto kBus = "staged desktop";
constexpr auto kPortal = "org.freedesktop.portal.Desktop";
constexpr auto kNotifications = "org.freedesktop.Notifications";

} // namespace

StagedDesktop::StagedDesktop()
    : bus_(QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), kBus)) {
    bus_.registerVirtualObject("/", this, QDBusConnection::SubPath);
    bus_.registerService(kNotifications);
    bus_.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this,
                 SLOT(launcherUpdated(QString, QVariantMap)));
}

StagedDesktop::~StagedDesktop() {
    QDBusConnection::disconnectFromBus(kBus);
}

void StagedDesktop::offerFolderDialog(const QString& url) {
    chosenUrl_ = url;
    bus_.registerService(kPortal);
}

bool StagedDesktop::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    if (message.member() == "Notify") {
        notifications << message.arguments().at(3).toString() + "\n" +
                             message.arguments().at(4).toString();
        return bus_.send(message.createReply(1U));
    }
    if (message.member() == "Get")
        return bus_.send(message.createReply(QVariant::fromValue(QDBusVariant(3U))));
    if (message.member() != "OpenFile")
        return false;
    const auto options = qdbus_cast<QVariantMap>(message.arguments().at(2));
    questions.push_back(options);
    questions.back().insert("title", message.arguments().at(1));
    const auto request = "/org/freedesktop/portal/desktop/request/" +
                         message.service().mid(1).replace('.', '_') + "/" +
                         options.value("handle_token").toString();
    bus_.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    auto response = QDBusMessage::createTargetedSignal(
        message.service(), request, "org.freedesktop.portal.Request", "Response");
    QVariantMap results;
    if (!chosenUrl_.isEmpty())
        results.insert("uris", QStringList(chosenUrl_));
    response << (chosenUrl_.isEmpty() ? 1U : 0U) << results;
    return bus_.send(response);
}

void StagedDesktop::launcherUpdated(const QString&, const QVariantMap& properties) {
    isProgressShown = properties.value("progress-visible").toBool();
    if (isProgressShown)
        progress.push_back(properties.value("progress").toDouble());
}

} // namespace slatewise::test
