#include "Platform/Clock.h"

#include <fmt/format.h>
#include <unicode/smpdtfmt.h>

#include <charconv>
#include <map>
#include <memory>

namespace slatewise::Clock {

using namespace std::chrono;

namespace {

/// "2026-03-01T09:30:15", or with another character than "T".
std::string dateTime(Instant moment, char between) {
    const auto midnight = floor<days>(moment);
    const year_month_day date(midnight);
    const hh_mm_ss time(floor<seconds>(moment - midnight));
    return fmt::format("{:04}-{:02}-{:02}{}{:02}:{:02}:{:02}", int(date.year()),
                       unsigned(date.month()), unsigned(date.day()), between, time.hours().count(),
                       time.minutes().count(), time.seconds().count());
}

/// The decimal digits of `text`, all of them, or nothing.
std::optional<int> digits(std::string_view text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    for (const char character : text) {
        if (character < '0' || character > '9')
            return std::nullopt;
    }
    const auto [stop, failure] = std::from_chars(text.data(), end, value);
    if (failure != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

/// "Z", "+03:00" or "+0300" as an offset to subtract. Empty when it is none of these.
std::optional<minutes> offset(std::string_view text) {
    if (text == "Z")
        return minutes(0);
    if ((text.size() != 6 || text[3] != ':') && text.size() != 5)
        return std::nullopt;
    if (text[0] != '+' && text[0] != '-')
        return std::nullopt;
    const auto wholeHours = digits(text.substr(1, 2));
    const auto restMinutes = digits(text.substr(text.size() - 2));
    if (!wholeHours || !restMinutes)
        return std::nullopt;
    const minutes size = hours(*wholeHours) + minutes(*restMinutes);
    return text[0] == '+' ? size : -size;
}

icu::UnicodeString toUnicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

UDate toDate(Instant moment) {
    return static_cast<UDate>(floor<milliseconds>(moment.time_since_epoch()).count());
}

std::string formatted(Instant moment, const icu::DateFormat& format) {
    icu::UnicodeString characters;
    format.format(toDate(moment), characters);
    std::string text;
    return characters.toUTF8String(text);
}

void use(icu::DateFormat& format, Zone zone) {
    if (zone == Zone::UTC)
        format.setTimeZone(*icu::TimeZone::getGMT());
}

} // namespace

Instant now() {
    return floor<microseconds>(system_clock::now());
}

std::string iso8601(Instant moment) {
    return dateTime(moment, 'T') + "Z";
}

std::optional<Instant> fromIso8601(std::string_view text) {
    constexpr std::size_t kDateLength = 10;
    constexpr std::size_t kDateTimeLength = 19;
    if (text.size() <= kDateTimeLength || text[10] != 'T' || text[13] != ':' || text[16] != ':')
        return std::nullopt;
    const auto day = utcDay(text.substr(0, kDateLength));
    const auto hour = digits(text.substr(11, 2));
    const auto minute = digits(text.substr(14, 2));
    const auto second = digits(text.substr(17, 2));
    const auto zone = offset(text.substr(kDateTimeLength));
    if (!day || !hour || !minute || !second || !zone)
        return std::nullopt;
    if (*hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    return *day + hours(*hour) + minutes(*minute) + seconds(*second) - *zone;
}

std::string databaseText(Instant moment) {
    const auto withinSecond = floor<milliseconds>(moment) - floor<seconds>(moment);
    return dateTime(moment, ' ') + fmt::format(".{:03}", withinSecond.count());
}

std::optional<Instant> fromDatabaseText(std::string_view text) {
    constexpr std::size_t kLength = 23;
    if (text.size() != kLength || text[10] != ' ' || text[19] != '.')
        return std::nullopt;
    auto wholeSeconds = std::string(text.substr(0, 19)) + "Z";
    wholeSeconds[10] = 'T';
    const auto moment = fromIso8601(wholeSeconds);
    const auto fraction = digits(text.substr(20));
    if (!moment || !fraction)
        return std::nullopt;
    return *moment + milliseconds(*fraction);
}

std::string localText(Instant moment, std::string_view pattern) {
    // Making a format costs more than a thousand uses of it, and a format belongs to one thread.
    thread_local std::map<std::string, icu::SimpleDateFormat, std::less<>> formats;
    auto format = formats.find(pattern);
    if (format == formats.end()) {
        UErrorCode status = U_ZERO_ERROR;
        format = formats
                     .try_emplace(std::string(pattern), toUnicode(pattern),
                                  icu::Locale("en_US_POSIX"), status)
                     .first;
    }
    return formatted(moment, format->second);
}

std::string localDateTime(Instant moment) {
    // A report asks for thousands of them, and a format would take most of its time.
    thread_local const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    std::int32_t offset = 0;
    std::int32_t daylightSaving = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone->getOffset(toDate(moment), false, offset, daylightSaving, status);
    return dateTime(moment + milliseconds(offset + daylightSaving), ' ');
}

std::string mediumDateTime(Instant moment, const char* locale) {
    const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kMedium, icu::DateFormat::kShort, icu::Locale(locale)));
    return format ? formatted(moment, *format) : iso8601(moment);
}

std::string mediumDate(Instant moment, const char* locale, Zone zone) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(locale)));
    if (!format)
        return iso8601(moment);
    use(*format, zone);
    return formatted(moment, *format);
}

std::optional<Instant> fromText(std::string_view text, std::string_view pattern, Zone zone) {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(toUnicode(pattern), icu::Locale("en_US_POSIX"), status);
    if (U_FAILURE(status))
        return std::nullopt;
    use(format, zone);
    format.setLenient(false);
    const icu::UnicodeString characters = toUnicode(text);
    icu::ParsePosition at(0);
    const UDate moment = format.parse(characters, at);
    // Of an empty text the library says that it fits.
    if (text.empty() || at.getErrorIndex() >= 0 || at.getIndex() != characters.length())
        return std::nullopt;
    return Instant(milliseconds(static_cast<std::int64_t>(moment)));
}

std::optional<Instant> utcDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    const auto yearNumber = digits(text.substr(0, 4));
    const auto monthNumber = digits(text.substr(5, 2));
    const auto dayNumber = digits(text.substr(8, 2));
    if (!yearNumber || !monthNumber || !dayNumber)
        return std::nullopt;
    const year_month_day date(year(*yearNumber), month(static_cast<unsigned>(*monthNumber)),
                              day(static_cast<unsigned>(*dayNumber)));
    if (!date.ok())
        return std::nullopt;
    return Instant(sys_days(date));
}

} // namespace slatewise::Clock
