#include "Platform/Files/FileWatch.h"

#include <QFile>
#include <QFileSystemWatcher>
#include <QTimer>

namespace slatewise {

namespace {

/// Long enough for an editor to finish writing.
constexpr std::chrono::milliseconds kCalm(50);
/// How often to look where the system cannot tell, as when all its watches are in use.
constexpr std::chrono::seconds kWithoutWatching(2);

} // namespace

struct FileWatch::Watcher {
    Watcher(const std::filesystem::path& file_, std::function<void()> onEvent_)
        : file(QFile::decodeName(file_.c_str())), onEvent(std::move(onEvent_)) {
        calm.setSingleShot(true);
        calm.setInterval(kCalm);
        QObject::connect(&calm, &QTimer::timeout, [this] { tell(); });
        const auto disturbed = [this] {
            calm.start();
        };
        QObject::connect(&events, &QFileSystemWatcher::directoryChanged, disturbed);
        QObject::connect(&events, &QFileSystemWatcher::fileChanged, disturbed);
        QObject::connect(&poll, &QTimer::timeout, [this] { tell(); });
        if (!events.addPath(QFile::decodeName(file_.parent_path().c_str())))
            poll.start(kWithoutWatching);
        watchFile();
    }

    void tell() {
        watchFile();
        onEvent();
    }

    /// The watch of a file goes with the file, and a new one of that name is another file.
    void watchFile() {
        if (!events.files().contains(file) && QFile::exists(file))
            events.addPath(file);
    }

    QString file;
    std::function<void()> onEvent;
    QFileSystemWatcher events;
    QTimer calm;
    QTimer poll;
};

FileWatch::FileWatch(const std::filesystem::path& file, std::function<void()> onEvent)
    : watcher_(std::make_unique<Watcher>(file, std::move(onEvent))) {}

FileWatch::~FileWatch() = default;

} // namespace slatewise
