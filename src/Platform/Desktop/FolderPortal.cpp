#include "Platform/Desktop/FolderPortal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace slatewise {

namespace {

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kChooser = "org.freedesktop.portal.FileChooser";
constexpr auto kRequest = "org.freedesktop.portal.Request";
/// The first whose dialog can be asked for folders.
constexpr uint kFirstWithFolders = 3;
/// A portal that has to be started first takes its time; one that hangs must not keep the user.
constexpr int kPatienceMilliseconds = 3000;

enum Response : uint { kDone = 0, kCancelled = 1 };

template <typename Then>
void whenAnswered(QObject* owner, const QDBusMessage& message, Then then) {
    const auto call = QDBusConnection::sessionBus().asyncCall(message, kPatienceMilliseconds);
    auto* watcher = new QDBusPendingCallWatcher(call, owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [then = std::move(then)](QDBusPendingCallWatcher* answered) {
                         answered->deleteLater();
                         then(*answered);
                     });
}

/// The bytes of a name stay what they are, whatever they mean as text.
std::filesystem::path pathOf(const QString& url) {
    const auto bytes = QByteArray::fromPercentEncoding(url.toUtf8());
    const QByteArray scheme = "file://";
    const auto begin = bytes.startsWith(scheme) ? bytes.indexOf('/', scheme.size()) : -1;
    return begin < 0 ? std::filesystem::path()
                     : std::filesystem::path(bytes.mid(begin).toStdString());
}

} // namespace

void FolderPortal::ask(Question question, Answer answer) {
    close();
    answer_ = std::move(answer);
    if (!QDBusConnection::sessionBus().isConnected())
        return give(End::NoDialog);
    auto version =
        QDBusMessage::createMethodCall(kService, kPath, "org.freedesktop.DBus.Properties", "Get");
    version << QString(kChooser) << QStringLiteral("version");
    whenAnswered(this, version,
                 [this, number = ++questions_,
                  question = std::move(question)](const QDBusPendingReply<QDBusVariant>& reply) {
                     if (number != questions_ || !answer_)
                         return;
                     if (reply.isError() || reply.value().variant().toUInt() < kFirstWithFolders)
                         return give(End::NoDialog);
                     askWith(question);
                 });
}

void FolderPortal::askWith(const Question& question) {
    auto bus = QDBusConnection::sessionBus();
    const auto token = QStringLiteral("folder%1").arg(questions_);
    // Listened for before the question is put: the answer may be there before the reply is.
    request_ =
        QString(kPath) + "/request/" + bus.baseService().mid(1).replace('.', '_') + "/" + token;
    bus.connect(kService, request_, kRequest, "Response", this, SLOT(responded(uint, QVariantMap)));
    auto message = QDBusMessage::createMethodCall(kService, kPath, kChooser, "OpenFile");
    const QVariantMap options = {
        {"handle_token", token},
        {"accept_label", question.prompt},
        {"modal", true},
        {"directory", true},
        // A name of the file system is its bytes and a zero.
        {"current_folder", QByteArray(question.start.c_str()).append('\0')},
    };
    message << question.parentWindow << question.message << options;
    whenAnswered(this, message,
                 [this, number = questions_](const QDBusPendingReply<QDBusObjectPath>& reply) {
                     if (number == questions_ && reply.isError())
                         give(End::NoDialog);
                 });
}

void FolderPortal::responded(uint response, const QVariantMap& results) {
    if (response == kCancelled)
        return give(End::Cancelled);
    const auto urls = results.value("uris").toStringList();
    if (response != kDone)
        return give(End::NoDialog);
    const auto folder = urls.isEmpty() ? std::filesystem::path() : pathOf(urls.constFirst());
    give(folder.empty() ? End::Cancelled : End::Chosen, folder);
}

void FolderPortal::close() {
    answer_ = nullptr;
    if (request_.isEmpty())
        return;
    auto bus = QDBusConnection::sessionBus();
    bus.disconnect(kService, request_, kRequest, "Response", this,
                   SLOT(responded(uint, QVariantMap)));
    bus.asyncCall(QDBusMessage::createMethodCall(kService, request_, kRequest, "Close"));
    request_.clear();
}

void FolderPortal::give(End end, std::filesystem::path folder) {
    if (!request_.isEmpty())
        QDBusConnection::sessionBus().disconnect(kService, request_, kRequest, "Response", this,
                                                 SLOT(responded(uint, QVariantMap)));
    request_.clear();
    // The answer may lead to the next question.
    if (const auto answer = std::exchange(answer_, nullptr))
        answer(end, std::move(folder));
}

} // namespace slatewise
