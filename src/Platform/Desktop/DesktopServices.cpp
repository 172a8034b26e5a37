#include "Platform/Desktop/DesktopServices.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFile>
#include <QUrl>

namespace slatewise::DesktopServices {

namespace {

QUrl urlOf(const std::filesystem::path& path) {
    return QUrl::fromLocalFile(QFile::decodeName(path.c_str()));
}

} // namespace

void openFile(const std::filesystem::path& file) {
    QDesktopServices::openUrl(urlOf(file));
}

void showFolder(const std::filesystem::path& folder) {
    const auto url = urlOf(folder);
    auto question = QDBusMessage::createMethodCall("org.freedesktop.FileManager1",
                                                   "/org/freedesktop/FileManager1",
                                                   "org.freedesktop.FileManager1", "ShowFolders");
    question << QStringList{url.toString(QUrl::FullyEncoded)} << QString();
    auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question));
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer, url] {
        // A desktop without such a service opens the folder like any other thing.
        if (QDBusPendingReply<>(*answer).isError())
            QDesktopServices::openUrl(url);
        answer->deleteLater();
    });
}

} // namespace slatewise::DesktopServices
