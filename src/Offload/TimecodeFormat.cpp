#include "Offload/TimecodeFormat.h"

#include "Platform/Numbers.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace slatewise::TimecodeFormat {

namespace {

/// Longer than any recording, and far from where 64 bits end.
constexpr std::int64_t kMostFrames = 1'000'000'000'000'000;

/// Frame numbers that are left out at the start of each minute but every tenth.
std::int64_t numbersDropped(FrameRate rate, Counting counting) {
    constexpr std::int64_t kCountedBase = 30;
    constexpr std::int64_t kDroppedPerBase = 2;
    const bool isSlowed = rate.seconds() == 1001;
    if (counting == Counting::NonDrop || !isSlowed || rate.nominal() % kCountedBase != 0)
        return 0;
    return rate.nominal() / kCountedBase * kDroppedPerBase;
}

constexpr std::int64_t kMinutesPerCycle = 10;

/// With the numbers that are left out.
std::int64_t withDropped(std::int64_t frames, std::int64_t nominal, std::int64_t dropped) {
    const auto perMinute = nominal * 60 - dropped;
    const auto perCycle = perMinute * kMinutesPerCycle + dropped;
    const auto rest = frames % perCycle;
    // The first minute of a cycle is whole.
    const auto minutes = rest < nominal * 60 ? 0 : (rest - dropped) / perMinute;
    return frames + dropped * (frames / perCycle * (kMinutesPerCycle - 1) + minutes);
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// How many characters at the start of the text are a timecode up to its frames, with one digit of
/// hours or two.
std::size_t lengthBeforeFrames(std::string_view text) {
    constexpr std::string_view kShape = "d:dd:dd:";
    const std::size_t lead = text.size() > 1 && isDigit(text[0]) && isDigit(text[1]) ? 1 : 0;
    if (text.size() < lead + kShape.size())
        return 0;
    for (std::size_t at = 0; at < kShape.size(); ++at) {
        const char character = text[lead + at];
        if (kShape[at] == 'd' ? !isDigit(character) : character != ':')
            return 0;
    }
    return lead + kShape.size();
}

/// The digits at the start of the text, two at least. There are as many as the rate has, and those
/// of a low number begin with zeros.
std::string frameDigits(std::string_view text) {
    constexpr std::size_t kUsual = 2;
    auto digits =
        text.substr(0, static_cast<std::size_t>(
                           std::find_if_not(text.begin(), text.end(), isDigit) - text.begin()));
    while (digits.size() > kUsual && digits.front() == '0')
        digits.remove_prefix(1);
    return std::string(digits.size() < kUsual ? "" : digits);
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

std::optional<std::string> normalized(const std::optional<std::string>& told) {
    if (!told)
        return std::nullopt;
    const auto colonsOnly = Text::replaced(*told, ";", ":");
    for (std::size_t at = 0; at < colonsOnly.size(); ++at) {
        const auto rest = std::string_view(colonsOnly).substr(at);
        const auto length = lengthBeforeFrames(rest);
        const auto frames = length > 0 ? frameDigits(rest.substr(length)) : std::string();
        if (!frames.empty())
            return fmt::format("{:0>9}", rest.substr(0, length)) + frames;
    }
    return std::nullopt;
}

Counting countingOf(std::optional<bool> dropFrame) {
    return dropFrame.value_or(false) ? Counting::DropFrame : Counting::NonDrop;
}

std::optional<std::int64_t> framesIn(double seconds, FrameRate rate, double rounding) {
    const double frames =
        seconds * static_cast<double>(rate.frames()) / static_cast<double>(rate.seconds());
    if (!(seconds >= 0) || !(frames < static_cast<double>(kMostFrames)))
        return std::nullopt;
    const double nearest = std::round(frames);
    const bool meansNearest = std::abs(frames - nearest) <= rounding * rate.perSecond();
    return static_cast<std::int64_t>(meansNearest ? nearest : frames);
}

std::optional<std::int64_t> framesIn(std::uint64_t samples, std::uint64_t samplesPerSecond,
                                     FrameRate rate) {
    using Wide = unsigned __int128;
    if (samplesPerSecond == 0)
        return std::nullopt;
    // The frame of the sample behind the last one, unless that begins with it.
    const auto scaled = (Wide{samples} + 1) * static_cast<Wide>(rate.frames()) - 1;
    const auto frames = scaled / (Wide{samplesPerSecond} * static_cast<Wide>(rate.seconds()));
    if (frames >= static_cast<Wide>(kMostFrames))
        return std::nullopt;
    return static_cast<std::int64_t>(frames);
}

std::string text(std::int64_t frames, FrameRate rate, Counting counting) {
    constexpr std::int64_t kSecondsPerMinute = 60;
    constexpr std::int64_t kSecondsPerHour = 3600;
    const auto nominal = rate.nominal();
    const auto number = withDropped(frames, nominal, numbersDropped(rate, counting));
    const auto seconds = number / nominal;
    return fmt::format("{:02d}:{:02d}:{:02d}:{:02d}", seconds / kSecondsPerHour,
                       seconds / kSecondsPerMinute % kSecondsPerMinute, seconds % kSecondsPerMinute,
                       number % nominal);
}

std::optional<std::int64_t> frameNumber(std::string_view timecode, FrameRate rate,
                                        Counting counting) {
    constexpr std::size_t kParts = 4;
    constexpr std::int64_t kLargestPart = 1'000'000;
    const auto parts = wholeNumbers(timecode);
    const bool isCountable = std::all_of(parts.begin(), parts.end(), [](std::int64_t part) {
        return part >= 0 && part <= kLargestPart;
    });
    if (parts.size() != kParts || !isCountable)
        return std::nullopt;
    const auto minutes = parts[0] * 60 + parts[1];
    const auto number = (minutes * 60 + parts[2]) * rate.nominal() + parts[3];
    return number - numbersDropped(rate, counting) * (minutes - minutes / kMinutesPerCycle);
}

std::optional<std::string> lastFrame(std::string_view start, std::int64_t frames, FrameRate rate,
                                     Counting counting) {
    const auto first = frameNumber(start, rate, counting);
    if (!first || frames < 1 || frames > kMostFrames)
        return std::nullopt;
    return text(*first + frames - 1, rate, counting);
}

} // namespace slatewise::TimecodeFormat
