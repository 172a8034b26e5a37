#include "Platform/UserFolders.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cstdlib>

namespace slatewise::UserFolders {

namespace {

std::filesystem::path home() {
    return QFile::encodeName(QDir::homePath()).toStdString();
}

/// The variable's folder; relative paths in these variables are to be ignored.
std::filesystem::path fromEnvironment(const char* variable) {
    const char* const value = std::getenv(variable);
    std::filesystem::path folder(value ? value : "");
    return folder.is_absolute() ? folder : std::filesystem::path();
}

std::filesystem::path fromEnvironment(const char* variable, const char* belowHome) {
    auto folder = fromEnvironment(variable);
    return folder.empty() ? home() / belowHome : folder;
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

} // namespace slatewise::UserFolders
