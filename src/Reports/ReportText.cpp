#include "Reports/ReportText.h"

#include "Offload/TimecodeFormat.h"
#include "Platform/Text.h"
#include "Reports/EssenceText.h"

#include <fmt/ranges.h>

#include <array>

namespace slatewise::ReportText {

namespace {

constexpr std::string_view kNothing = "—";

constexpr std::array<std::string_view, 7> kDateTimePatterns = {
    "yyyyMMdd HHmmss",         "yyyyMMdd HH:mm:ss",   "yyyyMMdd'T'HHmmss",
    "yyyy-MM-dd HH:mm:ss.SSS", "yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd'T'HH:mm:ssZ",
    "yyyy-MM-dd'T'HH:mm:ss",
};
constexpr std::array<std::string_view, 2> kDatePatterns = {"yyyyMMdd", "yyyy-MM-dd"};

struct ZonedText {
    std::string_view text;
    Clock::Zone zone;
};

/// Some writers put the zone before the date, others behind it.
ZonedText withoutZone(std::string_view text) {
    constexpr std::string_view kBefore = "utc ";
    constexpr std::string_view kBehind = " utc";
    const auto lowercased = Text::asciiLowercased(text);
    if (lowercased.starts_with(kBefore))
        return {text.substr(kBefore.size()), Clock::Zone::UTC};
    if (lowercased.ends_with(kBehind))
        return {text.substr(0, text.size() - kBehind.size()), Clock::Zone::UTC};
    return {text, Clock::Zone::Machine};
}

/// A camera without a clock writes zeros, or the moment from which the container counts.
bool isZero(std::string_view date) {
    const bool isDigitsOfZero =
        !date.empty() && date.find_first_not_of("0-:T. Z") == std::string_view::npos;
    return isDigitsOfZero || date.starts_with("1904-01-01") || date.starts_with("19040101");
}

} // namespace

std::string dateTime(Instant moment, AppLanguage language) {
    return Clock::mediumDateTime(moment, Language::locale(language));
}

std::string fileModified(Instant moment) {
    return Clock::localDateTime(moment);
}

std::string number(std::string plain, AppLanguage language) {
    if (language == AppLanguage::Turkish)
        plain = Text::replaced(plain, ".", ",");
    return plain;
}

std::string formatClipDate(std::string_view text, AppLanguage language) {
    auto trimmed = Text::trimmed(text);
    const auto [date, zone] = withoutZone(trimmed);
    if (isZero(date))
        return "";

    for (const auto pattern : kDateTimePatterns) {
        if (const auto moment = Clock::fromText(date, pattern, zone))
            return dateTime(*moment, language);
    }
    for (const auto pattern : kDatePatterns) {
        // A day stays the day that the camera wrote, wherever the report is made.
        if (const auto day = Clock::fromText(date, pattern, zone))
            return Clock::mediumDate(*day, Language::locale(language), zone);
    }
    return trimmed;
}

std::vector<std::string> timingLines(const ManifestFile& file, AppLanguage language) {
    auto rates = number(
        TimecodeFormat::capTC(file.media->captureFps, file.media->timecodeRate).text, language);
    if (file.media->timecodeDropFrame)
        rates += *file.media->timecodeDropFrame ? "  DF" : "  NDF";

    std::vector<std::string> lines;
    for (auto& line : {TimecodeFormat::range(file.media->timecodeStart, file.media->timecodeEnd),
                       displayDuration(file), rates}) {
        if (line != kNothing)
            lines.push_back(line);
    }
    return lines;
}

std::string cardFactsLine(const ClipEssence& essence, AppLanguage language) {
    auto shown = essence;
    if (shown.recordedDate)
        shown.recordedDate = formatClipDate(*shown.recordedDate, language);
    return fmt::format("{}",
                       fmt::join(EssenceText::cardLines(shown, language), EssenceText::separator));
}

} // namespace slatewise::ReportText
