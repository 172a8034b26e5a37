#include "Platform/MediaTiming.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace slatewise {

namespace {

constexpr std::string_view kDuration = "duration ";
constexpr std::string_view kFrameRate = "rate ";
constexpr std::string_view kFrameCount = "frames ";
constexpr std::string_view kTimecodeRate = "timecode-rate ";
constexpr std::string_view kTimecode = "timecode ";

std::string textOf(double number) {
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

std::string textOf(const FrameRate& rate) {
    return std::to_string(rate.frames()) + "/" + std::to_string(rate.seconds());
}

/// The whole text as a number above 0.
template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = failure == std::errc() && end == text.data() + text.size();
    if (!isWhole || !(number > 0) || !std::isfinite(static_cast<double>(number)))
        return std::nullopt;
    return number;
}

std::optional<FrameRate> rateIn(std::string_view text) {
    const auto slash = text.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const auto frames = numberIn<std::int64_t>(text.substr(0, slash));
    const auto seconds = numberIn<std::int64_t>(text.substr(slash + 1));
    return frames && seconds ? FrameRate::of(*frames, *seconds) : std::nullopt;
}

} // namespace

std::string MediaTiming::lines() const {
    std::string text;
    const auto add = [&](std::string_view key, const std::string& value) {
        text += std::string(key) + value + "\n";
    };
    if (durationSeconds)
        add(kDuration, textOf(*durationSeconds));
    if (frameRate)
        add(kFrameRate, textOf(*frameRate));
    if (frameCount)
        add(kFrameCount, std::to_string(*frameCount));
    if (timecodeRate)
        add(kTimecodeRate, textOf(*timecodeRate));
    if (timecode && timecode->find('\n') == std::string::npos)
        add(kTimecode, *timecode);
    return text;
}

MediaTiming MediaTiming::fromLines(std::string_view text) {
    MediaTiming timing;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const auto line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(kDuration))
            timing.durationSeconds = numberIn<double>(line.substr(kDuration.size()));
        else if (line.starts_with(kFrameRate))
            timing.frameRate = rateIn(line.substr(kFrameRate.size()));
        else if (line.starts_with(kFrameCount))
            timing.frameCount = numberIn<std::int64_t>(line.substr(kFrameCount.size()));
        else if (line.starts_with(kTimecodeRate))
            timing.timecodeRate = rateIn(line.substr(kTimecodeRate.size()));
        else if (line.starts_with(kTimecode))
            timing.timecode = line.substr(kTimecode.size());
    }
    return timing;
}

} // namespace slatewise
