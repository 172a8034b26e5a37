#include "Platform/Desktop/UserFolders.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace slatewise::UserFolders {

namespace {

std::filesystem::path home() {
    return QFile::encodeName(QDir::homePath()).toStdString();
}

/// The variable's folder; relative paths in these variables are to be ignored, which the library
/// (Qt 6.4) does not do.
std::filesystem::path fromEnvironment(const char* variable) {
    const char* const value = std::getenv(variable);
    std::filesystem::path folder(value ? value : "");
    return folder.is_absolute() ? folder : std::filesystem::path();
}

std::filesystem::path fromEnvironment(const char* variable, const char* belowHome) {
    auto folder = fromEnvironment(variable);
    return folder.empty() ? home() / belowHome : folder;
}

/// By the system's own word: the variable of that name is anybody's.
std::string userName() {
    constexpr std::size_t kRoomForOneEntry = 16384;
    std::array<char, kRoomForOneEntry> texts;
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found);
    return found ? found->pw_name : std::to_string(::geteuid());
}

/// Empty when nobody has changed users, or when the variable holds no name.
std::string desktopUserName() {
    const char* const value = std::getenv("SUDO_USER");
    const std::string name(value ? value : "");
    return name == "." || name == ".." || name.find('/') != std::string::npos ? "" : name;
}

} // namespace

std::filesystem::path applicationSupport() {
    return fromEnvironment("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path library() {
    return fromEnvironment("XDG_STATE_HOME", ".local/state");
}

std::filesystem::path configuration() {
    return fromEnvironment("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path documents() {
    if (auto folder = fromEnvironment("XDG_DOCUMENTS_DIR"); !folder.empty())
        return folder;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return folder.isEmpty() ? home() / "Documents"
                            : std::filesystem::path(QFile::encodeName(folder).toStdString());
}

std::vector<std::filesystem::path> media(const std::vector<std::filesystem::path>& roots) {
    const auto users = {userName(), desktopUserName()};
    std::vector<std::filesystem::path> folders;
    for (const auto& user : users) {
        for (const auto& root : roots) {
            if (!user.empty() &&
                std::find(folders.begin(), folders.end(), root / user) == folders.end())
                folders.push_back(root / user);
        }
    }
    return folders;
}

} // namespace slatewise::UserFolders
