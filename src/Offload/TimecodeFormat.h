#pragma once

#include "Platform/FrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Texts of rates and timecodes, and the arithmetic between them, which is one of whole frames.
/// Pure, and independent of the machine's locale. Hours do not wrap at 24.
namespace slatewise::TimecodeFormat {

/// Stands for a value that is not known.
inline constexpr std::string_view missing = "—";

/// A frame rate: "25" for what is within 0.001 of a whole number, else "23.976".
std::string fpsString(double value);

struct CapTC {
    /// "25 / 24", the missing side as "—"; a single "—" when both are.
    std::string text;
    /// Both rates are known and more than 0.05 apart.
    bool mismatch = false;

    friend bool operator==(const CapTC&, const CapTC&) = default;
};

/// The rate at which a clip was recorded beside the rate of its timecode.
CapTC capTC(std::optional<double> capture, std::optional<double> rate);

/// "01:00:00:00 → 01:00:10:00", the one that there is, or "—".
std::string range(const std::optional<std::string>& start, const std::optional<std::string>& end);

/// The first timecode in what somebody tells, always with colons: "01:00:00:00".
std::optional<std::string> normalized(const std::optional<std::string>& told);

/// How frames are numbered.
enum class Counting {
    NonDrop,
    /// Leaves numbers out at the start of most minutes, so that at 29.97 or 59.94 frames a second
    /// an hour of timecode lasts an hour. At other rates the same as `NonDrop`.
    DropFrame,
};

Counting countingOf(std::optional<bool> dropFrame);

/// How many whole frames there are in so many seconds, which may be off by `rounding` seconds and
/// mean a whole number of frames where one lies that near. Nothing for what cannot be counted.
std::optional<std::int64_t> framesIn(double seconds, FrameRate rate, double rounding = 0.0005);

/// How many frames begin before the moment at which a recorder has taken so many samples; it cuts
/// off the part of a sample at which a frame may begin. Nothing for what cannot be counted.
std::optional<std::int64_t> framesIn(std::uint64_t samples, std::uint64_t samplesPerSecond,
                                     FrameRate rate);

/// The timecode of a frame when the first is 00:00:00:00, which is also a length in timecode:
/// "HH:MM:SS:FF", always with colons. `frames` is 0 or more.
std::string text(std::int64_t frames, FrameRate rate, Counting counting);

/// The opposite of `text`; nothing when that is no timecode.
std::optional<std::int64_t> frameNumber(std::string_view timecode, FrameRate rate,
                                        Counting counting);

/// The timecode of the last of so many frames, of which the first has `start`. Nothing when there
/// is none, or when `start` is no timecode.
std::optional<std::string> lastFrame(std::string_view start, std::int64_t frames, FrameRate rate,
                                     Counting counting);

} // namespace slatewise::TimecodeFormat
