#include "Storage/SupportPaths.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserFolders.h"
#include "Platform/Text.h"

namespace slatewise::SupportPaths {

namespace {

std::filesystem::path made(std::filesystem::path folder) {
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return folder;
}

} // namespace

std::filesystem::path applicationSupport() {
    return made(UserFolders::applicationSupport() / "Slatewise DIT");
}

std::filesystem::path logsDirectory() {
    return made(UserFolders::library() / "Logs" / "Slatewise DIT");
}

std::filesystem::path databaseURL(std::string_view fileName) {
    return applicationSupport() / fileName;
}

std::filesystem::path defaultReportsDirectory() {
    return UserFolders::documents() / "SlatewiseDIT";
}

std::filesystem::path reportsArchivePath(const OffloadSettings& settings) {
    const std::filesystem::path chosen = Text::trimmed(settings.outputFolderPath);
    return chosen.empty() ? defaultReportsDirectory() : chosen;
}

std::filesystem::path reportsArchive(const OffloadSettings& settings) {
    return made(reportsArchivePath(settings));
}

} // namespace slatewise::SupportPaths
