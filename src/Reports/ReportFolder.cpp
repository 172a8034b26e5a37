#include "Reports/ReportFolder.h"

#include "Platform/FileSystem.h"
#include "Platform/Text.h"

namespace slatewise::ReportFolder {

namespace {

constexpr std::size_t kPersonLimit = 24;
constexpr std::size_t kCardLimit = 40;
constexpr std::size_t kSessionIDLimit = 8;

/// One part of a name: at most `limit` characters, none that any file system objects to.
std::string sanitize(std::string_view raw, std::size_t limit) {
    constexpr std::string_view kForbidden = "/:\\*?\"<>|\n\r";
    std::string text = Text::trimmed(raw);
    for (char& character : text) {
        if (kForbidden.find(character) != std::string_view::npos)
            character = '-';
        else if (character == ' ')
            character = '_';
    }
    while (text.find("__") != std::string::npos)
        text = Text::replaced(text, "__", "_");
    text.erase(text.find_last_not_of("._-") + 1);
    text.erase(0, text.find_first_not_of("._-"));
    return text.empty() ? "unknown" : Text::prefix(text, limit);
}

} // namespace

std::string displayName(Instant startedAt, std::string_view ekip, std::string_view camera,
                        std::string_view cardName) {
    return Clock::localText(startedAt, "yyyy-MM-dd-HHmmss") + "-" + sanitize(ekip, kPersonLimit) +
           "-" + sanitize(Text::trimmed(Text::pathSafeLabel(camera)), kPersonLimit) + "-" +
           sanitize(cardName, kCardLimit);
}

std::string uniqueName(const std::string& name, const std::string& sessionID,
                       const std::filesystem::path& root,
                       const std::optional<std::filesystem::path>& besides) {
    const auto candidate = root / name;
    if (!FileSystem::exists(candidate))
        return name;
    if (besides && besides->lexically_normal() == candidate.lexically_normal())
        return name;
    auto withShortID = name + "_" + Text::replaced(sessionID, "-", "").substr(0, kSessionIDLimit);
    if (!FileSystem::exists(root / withShortID))
        return withShortID;
    return name + "_" + sanitize(sessionID, kSessionIDLimit);
}

std::filesystem::path destinationReportsRoot(const std::filesystem::path& mountPoint) {
    return mountPoint / "reports";
}

} // namespace slatewise::ReportFolder
