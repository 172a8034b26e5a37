#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Texts of rates and timecodes, and the little arithmetic there is between them. Pure, and
/// independent of the machine's locale.
///
/// Counting is non-drop at the nominal rate, for drop-frame recordings too: whether a clip drops
/// frame numbers is told beside its timecode. Hours do not wrap at 24.
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

/// A length as "HH:MM:SS:FF"; "—" for a length or a rate that cannot be counted.
std::string durationTC(double seconds, double rate);

/// The timecode that lies `seconds` after `start`. Empty when `start` is no timecode, or length or
/// rate cannot be counted.
std::optional<std::string> adding(std::string_view start, double seconds, double rate);

} // namespace slatewise::TimecodeFormat
