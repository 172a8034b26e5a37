#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

/// A moment in time, independent of any time zone. Microseconds reach far enough for any date a
/// file system can hold.
using Instant = std::chrono::sys_time<std::chrono::microseconds>;

/// Texts of moments. The fixed forms below never depend on the machine's locale.
namespace Clock {

/// The present moment.
Instant now();

/// "2026-03-01T09:30:15Z": UTC, whole seconds (fractions are cut).
std::string iso8601(Instant moment);

/// Reads the form above, or the same with an offset such as "+03:00". Empty when it is not one.
std::optional<Instant> fromIso8601(std::string_view text);

/// "2026-03-01 09:30:15.123": UTC, as the database stores it.
std::string databaseText(Instant moment);

/// Reads the form above. Empty when the text is not exactly that.
std::optional<Instant> fromDatabaseText(std::string_view text);

/// The moment in the machine's time zone, by an ICU date pattern such as "yyyy-MM-dd", with the
/// locale "en_US_POSIX".
std::string localText(Instant moment, std::string_view pattern);

/// The moment in the machine's time zone as "2026-03-01 09:30:15".
std::string localDateTime(Instant moment);

/// Where a day begins and what a clock on the wall shows.
enum class Zone { Machine, UTC };

/// Day and time of day in the machine's time zone, as people of an ICU locale write them briefly:
/// "Mar 1, 2026, 9:30 AM".
std::string mediumDateTime(Instant moment, const char* locale);

/// The day alone: "Mar 1, 2026".
std::string mediumDate(Instant moment, const char* locale, Zone zone);

/// The moment that a text states by an ICU date pattern, in the locale "en_US_POSIX". Empty unless
/// the whole text fits and names a day and a time that exist.
std::optional<Instant> fromText(std::string_view text, std::string_view pattern, Zone zone);

/// Midnight UTC of a day written as "yyyy-MM-dd". Empty when the text is not exactly that.
std::optional<Instant> utcDay(std::string_view text);

} // namespace Clock

} // namespace slatewise
