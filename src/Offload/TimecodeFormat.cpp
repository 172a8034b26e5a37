#include "Offload/TimecodeFormat.h"

#include "Platform/Numbers.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace slatewise::TimecodeFormat {

namespace {

/// Frames are counted in doubles, which hold whole numbers exactly up to here.
constexpr double kCountableLimit = 9'007'199'254'740'992.0;

std::optional<std::int64_t> countable(double number) {
    if (!(std::abs(number) < kCountableLimit))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::optional<std::int64_t> nominalRate(double rate) {
    if (!(rate > 0))
        return std::nullopt;
    return countable(std::max(std::round(rate), 1.0));
}

std::string text(std::int64_t frames, std::int64_t nominal) {
    constexpr std::int64_t kSecondsPerMinute = 60;
    constexpr std::int64_t kSecondsPerHour = 3600;
    const std::int64_t seconds = frames / nominal;
    return fmt::format("{:02d}:{:02d}:{:02d}:{:02d}", seconds / kSecondsPerHour,
                       seconds / kSecondsPerMinute % kSecondsPerMinute, seconds % kSecondsPerMinute,
                       frames - seconds * nominal);
}

std::vector<std::int64_t> wholeNumbers(std::string_view timecode) {
    std::vector<std::int64_t> numbers;
    const auto colonsOnly = Text::replaced(timecode, ";", ":");
    for (const auto piece : Text::pieces(colonsOnly, ':')) {
        if (const auto number = Numbers::whole(piece))
            numbers.push_back(*number);
    }
    return numbers;
}

} // namespace

std::string fpsString(double value) {
    constexpr double kWholeWithin = 0.001;
    const double whole = std::round(value);
    if (std::abs(value - whole) < kWholeWithin)
        return fmt::format("{:.0f}", whole + 0.0); // what rounds to -0 is 0
    return fmt::format("{:g}", value);
}

CapTC capTC(std::optional<double> capture, std::optional<double> rate) {
    constexpr double kSameWithin = 0.05;
    if (!capture && !rate)
        return {std::string(missing)};
    const auto side = [](std::optional<double> value) {
        return value ? fpsString(*value) : std::string(missing);
    };
    return {side(capture) + " / " + side(rate),
            capture && rate && std::abs(*capture - *rate) > kSameWithin};
}

std::string range(const std::optional<std::string>& start, const std::optional<std::string>& end) {
    const auto from = Text::trimmed(start.value_or(""));
    const auto to = Text::trimmed(end.value_or(""));
    if (from.empty() && to.empty())
        return std::string(missing);
    if (from.empty() || to.empty())
        return from + to;
    return from + " → " + to;
}

std::string durationTC(double seconds, double rate) {
    const auto nominal = nominalRate(rate);
    const auto frames = countable(seconds * rate);
    if (!(seconds >= 0) || !nominal || !frames)
        return std::string(missing);
    return text(*frames, *nominal);
}

std::optional<std::string> adding(std::string_view start, double seconds, double rate) {
    constexpr std::size_t kParts = 4;
    const auto parts = wholeNumbers(start);
    const auto nominal = nominalRate(rate);
    if (parts.size() != kParts || !nominal || !(seconds >= 0))
        return std::nullopt;
    const auto number = [&](std::size_t part) {
        return static_cast<double>(parts[part]);
    };
    const double startFrames =
        (number(0) * 3600 + number(1) * 60 + number(2)) * static_cast<double>(*nominal) + number(3);
    const auto frames = countable(startFrames + std::trunc(seconds * rate));
    if (!frames)
        return std::nullopt;
    return text(*frames, *nominal);
}

} // namespace slatewise::TimecodeFormat
