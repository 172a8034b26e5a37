#include "Platform/Disks/UDisksClient.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include <mutex>

namespace slatewise {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr auto kService = "org.freedesktop.UDisks2";

constexpr milliseconds kLimitToTell = 2s;
constexpr milliseconds kLimitToUnmount = 5min;
constexpr milliseconds kLimitToRelease = 30s;

/// One connection for each bus for the life of the process, made anew when it was lost.
QDBusConnection connectionTo(const std::string& address) {
    static std::mutex lock;
    const std::lock_guard guard(lock);
    const auto name = QString::fromStdString("slatewise-disks " + address);
    QDBusConnection known(name);
    if (known.isConnected())
        return known;
    QDBusConnection::disconnectFromBus(name);
    return address.empty() ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
                           : QDBusConnection::connectToBus(QString::fromStdString(address), name);
}

QDBusMessage ask(const std::string& address, const QDBusMessage& question, milliseconds limit) {
    return connectionTo(address).call(question, QDBus::Block, static_cast<int>(limit.count()));
}

} // namespace

std::optional<UDisksObjects> UDisksClient::objects() const {
    const auto question =
        QDBusMessage::createMethodCall(kService, "/org/freedesktop/UDisks2",
                                       "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    const auto answer = ask(busAddress_, question, kLimitToTell);
    constexpr auto kWhatItShouldBe = "a{oa{sa{sv}}}";
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != kWhatItShouldBe)
        return std::nullopt;
    return UDisksObjects(
        qdbus_cast<UDisksObjects::Objects>(answer.arguments().constFirst().value<QDBusArgument>()));
}

void UDisksClient::unmount(const EjectPlan& plan) const {
    call(plan.fileSystem, "org.freedesktop.UDisks2.Filesystem", "Unmount", kLimitToUnmount);
}

void UDisksClient::release(const EjectPlan& plan) const {
    if (!plan.encrypted.isEmpty())
        call(plan.encrypted, "org.freedesktop.UDisks2.Encrypted", "Lock", kLimitToRelease);
    if (plan.driveStep == EjectPlan::Drive::Eject)
        call(plan.drive, "org.freedesktop.UDisks2.Drive", "Eject", kLimitToRelease);
    if (plan.driveStep == EjectPlan::Drive::PowerOff)
        call(plan.drive, "org.freedesktop.UDisks2.Drive", "PowerOff", kLimitToRelease);
}

void UDisksClient::call(const QString& object, const char* interface, const char* method,
                        milliseconds limit) const {
    auto question = QDBusMessage::createMethodCall(kService, object, interface, method);
    question << QVariantMap();
    const auto answer = ask(busAddress_, question, limit);
    if (answer.type() != QDBusMessage::ReplyMessage)
        throw UDisksError(method + (": " + answer.errorMessage().toStdString()) + " (" +
                              answer.errorName().toStdString() + ")",
                          answer.errorName().toStdString());
}

} // namespace slatewise
