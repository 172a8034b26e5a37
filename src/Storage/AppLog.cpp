#include "Storage/AppLog.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Storage/SupportPaths.h"

#include <optional>
#include <string>

namespace slatewise::AppLog {

namespace {

constexpr std::string_view kPrefix = "dit-";
constexpr std::string_view kSuffix = ".log";

/// The day a log file is named after. Empty for any other file.
std::optional<Instant> dayOf(std::string_view fileName) {
    if (!fileName.starts_with(kPrefix) || !fileName.ends_with(kSuffix) ||
        fileName.size() < kPrefix.size() + kSuffix.size())
        return std::nullopt;
    fileName.remove_prefix(kPrefix.size());
    fileName.remove_suffix(kSuffix.size());
    return Clock::utcDay(fileName);
}

std::string line(std::string_view message, Instant now) {
    return "[" + Clock::iso8601(now) + "] " + Text::visible(message) + "\n";
}

} // namespace

void append(std::string_view message) {
    const auto now = Clock::now();
    const auto folder = SupportPaths::logsDirectory();
    prune(folder, now);
    const auto fileName =
        std::string(kPrefix) + Clock::localText(now, "yyyy-MM-dd") + std::string(kSuffix);
    try {
        FileSystem::append(folder / fileName, line(message, now));
    } catch (const Error&) {
        // The line is lost; nothing that matters may depend on the log.
    }
}

void prune(const std::filesystem::path& folder, Instant now) {
    const auto limit = now - std::chrono::hours(24 * retentionDays);
    std::error_code failure;
    for (auto entry = std::filesystem::directory_iterator(folder, failure);
         !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const auto day = dayOf(entry->path().filename().native());
        std::error_code ignored;
        if (day && *day < limit)
            std::filesystem::remove(entry->path(), ignored);
    }
}

} // namespace slatewise::AppLog
