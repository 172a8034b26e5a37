#include "Platform/Desktop/UserDefaults.h"

#include "Platform/Desktop/UserFolders.h"
#include "Platform/Files/FileDescriptor.h"

#include <QFile>
#include <QSettings>
#include <fcntl.h>
#include <sys/stat.h>

#include <map>
#include <mutex>

namespace slatewise {

namespace {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Project and crew names are nobody else's to read. Whatever keeps this from being done shows when
/// the file is written.
void makePrivate(const QString& file) {
    const std::filesystem::path path = QFile::encodeName(file).toStdString();
    std::error_code ignored;
    if (std::filesystem::create_directories(path.parent_path(), ignored))
        std::filesystem::permissions(path.parent_path(), std::filesystem::perms::owner_all,
                                     ignored);
    constexpr mode_t kOwnersAlone = 0600;
    const FileDescriptor made(::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, kOwnersAlone));
    // One that was written before is narrowed.
    if (made)
        (void)::fchmod(made.get(), kOwnersAlone);
}

} // namespace

struct UserDefaults::Storage {
    explicit Storage(const QString& file) : settings(file, QSettings::IniFormat) {}

    std::mutex lock;
    QSettings settings;
    bool keepsChangesInMemory = false;
    /// Changes that are not written; nothing stands for a removed value.
    std::map<std::string, std::optional<std::string>, std::less<>> changes;
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
    if (const auto found = storage_->changes.find(key); found != storage_->changes.end())
        return found->second;
    const QVariant stored = storage_->settings.value(toQString(key));
    if (!stored.isValid())
        return std::nullopt;
    return stored.toString().toStdString();
}

void UserDefaults::setValue(std::string_view key, std::string_view value) {
    const std::lock_guard guard(storage_->lock);
    if (storage_->keepsChangesInMemory) {
        storage_->changes.insert_or_assign(std::string(key), std::string(value));
        return;
    }
    makePrivate(storage_->settings.fileName());
    storage_->settings.setValue(toQString(key), toQString(value));
    storage_->settings.sync();
}

void UserDefaults::removeValue(std::string_view key) {
    const std::lock_guard guard(storage_->lock);
    if (storage_->keepsChangesInMemory) {
        storage_->changes.insert_or_assign(std::string(key), std::nullopt);
        return;
    }
    storage_->settings.remove(toQString(key));
    storage_->settings.sync();
}

void UserDefaults::keepChangesInMemory() {
    const std::lock_guard guard(storage_->lock);
    storage_->keepsChangesInMemory = true;
}

} // namespace slatewise
