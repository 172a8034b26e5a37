#include "Platform/Numbers.h"

#include <unicode/numberformatter.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <map>

namespace slatewise::Numbers {

namespace {

struct ByteUnit {
    const char* name;
    double size;
    int maximumFractionDigits;
};

constexpr std::array<ByteUnit, 4> kByteUnits = {{
    {"KB", 1e3, 0},
    {"MB", 1e6, 1},
    {"GB", 1e9, 2},
    {"TB", 1e12, 2},
}};

std::string formatted(const icu::number::LocalizedNumberFormatter& formatter, double value) {
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    const auto number = formatter.formatDouble(value, status);
    number.toTempString(status).toUTF8String(text);
    return text;
}

/// The whole text as a number of the type. A plus sign is ours to skip: the library knows none.
template <typename Number>
std::optional<Number> parsed(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

} // namespace

std::string byteCount(std::int64_t bytes, const char* locale) {
    const double size = std::abs(static_cast<double>(bytes));
    if (size < 1000)
        return std::to_string(bytes) + (size == 1 ? " byte" : " bytes");

    // A value that rounds up to a full 1000 belongs to the next unit: 999,999 bytes are 1 MB.
    std::size_t unit = 0;
    while (unit + 1 < kByteUnits.size() &&
           rounded(size / kByteUnits[unit].size, kByteUnits[unit].maximumFractionDigits) >= 1000)
        ++unit;

    const auto& chosen = kByteUnits[unit];
    const std::string name = locale ? locale : icu::Locale::getDefault().getName();
    const auto key = name + std::to_string(chosen.maximumFractionDigits);
    thread_local std::map<std::string, icu::number::LocalizedNumberFormatter> formatters;
    auto formatter = formatters.find(key);
    if (formatter == formatters.end()) {
        using icu::number::Precision;
        formatter =
            formatters
                .emplace(key, icu::number::NumberFormatter::withLocale(icu::Locale(name.c_str()))
                                  .precision(Precision::maxFraction(chosen.maximumFractionDigits))
                                  .roundingMode(UNUM_ROUND_HALFUP))
                .first;
    }
    return formatted(formatter->second, static_cast<double>(bytes) / chosen.size) + " " +
           chosen.name;
}

std::string grouped(std::int64_t count, const char* locale) {
    thread_local std::map<std::string, icu::number::LocalizedNumberFormatter, std::less<>>
        formatters;
    auto formatter = formatters.find(std::string_view(locale));
    if (formatter == formatters.end()) {
        formatter =
            formatters
                .emplace(locale, icu::number::NumberFormatter::withLocale(icu::Locale(locale)))
                .first;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    const auto number = formatter->second.formatInt(count, status);
    number.toTempString(status).toUTF8String(text);
    return U_SUCCESS(status) ? text : std::to_string(count);
}

std::string shortest(double value) {
    // Within these an exponent would be shorter at times, but nobody writes 100000 as 1e+05.
    constexpr double kLeastInFull = 1e-4;
    constexpr double kFirstTooLong = 1e16;
    const double size = std::abs(value);
    const bool isInFull = size == 0 || (size >= kLeastInFull && size < kFirstTooLong);
    std::array<char, 32> buffer;
    const auto [end, failure] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                      isInFull ? std::chars_format::fixed : std::chars_format::scientific);
    std::string text(buffer.data(), failure == std::errc() ? end : buffer.data());
    if (isInFull && text.find('.') == std::string::npos)
        text += ".0";
    return text;
}

double rounded(double value, int fractionDigits) {
    const double scale = std::pow(10.0, fractionDigits);
    const double scaled = std::round(value * scale);
    // What is too large to be scaled has no digits there anyway.
    return std::isfinite(scaled) ? scaled / scale : value;
}

std::optional<double> decimal(std::string_view text) {
    const auto number = parsed<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<double> quotient(std::string_view text) {
    const auto slash = text.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const auto dividend = decimal(text.substr(0, slash));
    const auto divisor = decimal(text.substr(slash + 1));
    if (!dividend || !divisor || *divisor == 0)
        return std::nullopt;
    const double result = *dividend / *divisor;
    return std::isfinite(result) ? std::optional(result) : std::nullopt;
}

std::optional<std::int64_t> whole(std::string_view text) {
    return parsed<std::int64_t>(text);
}

} // namespace slatewise::Numbers
