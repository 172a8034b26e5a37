#include "Platform/Desktop/DesktopNews.h"

#include "Platform/AppInfo.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace slatewise::DesktopNews {

namespace {

constexpr auto kLauncherPath = "/com/slatewise/dit/launcher";
constexpr auto kLauncher = "com.canonical.Unity.LauncherEntry";
constexpr auto kNotifications = "org.freedesktop.Notifications";
constexpr auto kNotificationsPath = "/org/freedesktop/Notifications";
/// How long the desktop shows a notification is its own affair.
constexpr int kUsualTime = -1;

QString desktopEntry() {
    return QString::fromUtf8(AppInfo::bundleID.data(), AppInfo::bundleID.size());
}

} // namespace

void showProgress(std::optional<double> fraction) {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto update = QDBusMessage::createSignal(kLauncherPath, kLauncher, "Update");
    update << "application://" + desktopEntry() + ".desktop"
           << QVariantMap{{"progress", fraction.value_or(0)},
                          {"progress-visible", fraction.has_value()}};
    bus.send(update);
}

void notify(const QString& title, const QString& text, Urgency urgency) {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto message = QDBusMessage::createMethodCall(kNotifications, kNotificationsPath,
                                                  kNotifications, "Notify");
    const QVariantMap hints = {
        {"desktop-entry", desktopEntry()},
        {"urgency", QVariant::fromValue<uchar>(urgency == Urgency::Critical ? 2 : 1)},
    };
    // The text may hold markup, and names of cards are none.
    message << QString::fromUtf8(AppInfo::name.data(), AppInfo::name.size()) << 0U << desktopEntry()
            << title << text.toHtmlEscaped() << QStringList() << hints << kUsualTime;
    bus.send(message);
}

} // namespace slatewise::DesktopNews
