#include "Storage/SupportPaths.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserFolders.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

namespace slatewise::SupportPaths {

namespace {

std::filesystem::path made(std::filesystem::path folder) {
    try {
        FileSystem::createFolders(folder);
    } catch (const Error&) {
        // Whoever writes into it learns why.
    }
    return folder;
}

/// What is on the cards of a production is nobody else's business.
std::filesystem::path madePrivate(std::filesystem::path folder) {
    folder = made(std::move(folder));
    std::error_code ignored;
    // Only where it has to be: who watches the folder would hear of each change of its rights.
    if (std::filesystem::status(folder, ignored).permissions() != std::filesystem::perms::owner_all)
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
    return folder;
}

} // namespace

std::filesystem::path applicationSupport() {
    return madePrivate(UserFolders::applicationSupport() / "Slatewise DIT");
}

std::filesystem::path logsDirectory() {
    return madePrivate(UserFolders::library() / "Logs" / "Slatewise DIT");
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
    const auto archive = reportsArchivePath(settings);
    return archive == defaultReportsDirectory() ? made(archive) : archive;
}

} // namespace slatewise::SupportPaths
