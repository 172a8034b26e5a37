#include "Platform/Desktop/ColorScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace slatewise {

namespace {

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kSpace = "org.freedesktop.appearance";
constexpr auto kKey = "color-scheme";
/// A portal that is slower than this costs the window a moment in the wrong colours, no more.
constexpr int kPatienceMilliseconds = 150;

/// The portal wraps a read value once more than a notified one.
uint unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

} // namespace

ColorScheme::ColorScheme(QObject* parent) : QObject(parent) {
    qGuiApp->installEventFilter(this);
    readPortal();
}

bool ColorScheme::isDark() const {
    if (preference_ != Preference::None)
        return preference_ == Preference::Dark;
    const auto palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

bool ColorScheme::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange)
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

void ColorScheme::readPortal() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(kService, kPath, kInterface, "SettingChanged", this,
                SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    auto question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
    question << QString(kSpace) << QString(kKey);
    const auto answer = bus.call(question, QDBus::Block, kPatienceMilliseconds);
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
        preference_ = static_cast<Preference>(unwrapped(answer.arguments().constFirst()));
}

void ColorScheme::portalSettingChanged(const QString& space, const QString& key,
                                       const QDBusVariant& value) {
    if (space != QLatin1String(kSpace) || key != QLatin1String(kKey))
        return;
    preference_ = static_cast<Preference>(unwrapped(QVariant::fromValue(value)));
    Q_EMIT changed();
}

} // namespace slatewise
