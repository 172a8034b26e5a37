#include "Platform/Desktop/UserDefaults.h"

#include "Platform/Desktop/UserFolders.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"

#include <QFile>
#include <QSettings>
#include <fcntl.h>
#include <sys/stat.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace slatewise {

namespace {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Project and crew names are nobody else's to read. Whatever keeps this from being done shows when
/// the file is written.
void makePrivate(const QString& file) {
    const std::filesystem::path path = QFile::encodeName(file).toStdString();
    try {
        const bool isThere = FileSystem::exists(path.parent_path());
        FileSystem::createFolders(path.parent_path());
        if (!isThere)
            std::filesystem::permissions(path.parent_path(), std::filesystem::perms::owner_all);
    } catch (const std::exception&) {
        return;
    }
    constexpr mode_t kOwnersAlone = 0600;
    const FileDescriptor made(::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, kOwnersAlone));
    // One that was written before is narrowed.
    if (made)
        (void)::fchmod(made.get(), kOwnersAlone);
}

} // namespace

struct UserDefaults::Storage {
    using Changes = std::map<std::string, std::optional<std::string>, std::less<>>;

    explicit Storage(const QString& file) : settings(file, QSettings::IniFormat) {
        for (const auto& key : settings.allKeys())
            values.emplace(key.toStdString(), settings.value(key).toString().toStdString());
    }

    void change(std::string_view key, std::optional<std::string> value) {
        const std::lock_guard guard(lock);
        values.insert_or_assign(std::string(key), value);
        if (keepsChangesInMemory)
            return;
        unwritten.insert_or_assign(std::string(key), std::move(value));
        if (!writer.joinable())
            writer = std::jthread([this](const std::stop_token& stop) { writeUntil(stop); });
        changed.notify_all();
    }

    /// Writes what was changed, to the last of it.
    void writeUntil(const std::stop_token& stop) {
        std::unique_lock guard(lock);
        for (;;) {
            changed.wait(guard, stop, [&] { return !unwritten.empty(); });
            if (unwritten.empty())
                return;
            beingWritten = std::exchange(unwritten, {});
            guard.unlock();
            write();
            guard.lock();
            beingWritten.clear();
            changed.notify_all();
        }
    }

    void write() {
        makePrivate(settings.fileName());
        for (const auto& [key, value] : beingWritten) {
            if (value)
                settings.setValue(toQString(key), toQString(*value));
            else
                settings.remove(toQString(key));
        }
        settings.sync();
    }

    std::mutex lock;
    std::condition_variable_any changed;
    /// As this process sees them; nothing stands for a removed value.
    Changes values;
    Changes unwritten;
    Changes beingWritten;
    bool keepsChangesInMemory = false;
    /// The writer's alone once it runs.
    QSettings settings;
    std::jthread writer;
};

UserDefaults::UserDefaults(const std::filesystem::path& file)
    : storage_(std::make_unique<Storage>(QFile::decodeName(file.c_str()))) {}

UserDefaults::~UserDefaults() = default;

UserDefaults& UserDefaults::standard() {
    static UserDefaults defaults(UserFolders::configuration() / "Slatewise DIT" / "settings.ini");
    return defaults;
}

std::optional<std::string> UserDefaults::value(std::string_view key) const {
    const std::lock_guard guard(storage_->lock);
    const auto found = storage_->values.find(key);
    return found == storage_->values.end() ? std::nullopt : found->second;
}

void UserDefaults::setValue(std::string_view key, std::string_view value) {
    storage_->change(key, std::string(value));
}

void UserDefaults::removeValue(std::string_view key) {
    storage_->change(key, std::nullopt);
}

void UserDefaults::keepChangesInMemory() {
    const std::lock_guard guard(storage_->lock);
    storage_->keepsChangesInMemory = true;
}

void UserDefaults::waitUntilWritten() {
    std::unique_lock guard(storage_->lock);
    storage_->changed.wait(
        guard, [&] { return storage_->unwritten.empty() && storage_->beingWritten.empty(); });
}

} // namespace slatewise
