#pragma once

#include "Platform/FrameRate.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

/// What the media library knows of a file's timing.
namespace slatewise::MediaFile {

/// Every number is finite and above 0.
struct Timing {
    std::optional<double> durationSeconds;
    /// Of the first video track.
    std::optional<FrameRate> frameRate;
    std::optional<std::int64_t> frameCount;
    /// Of the first timecode track.
    std::optional<FrameRate> timecodeRate;
    /// Of the first frame; with a semicolon when numbers are dropped: "01:00:00;00".
    std::optional<std::string> timecode;

    friend bool operator==(const Timing&, const Timing&) = default;
};

/// Looks into a file's headers, and into a little of its content where they leave something open.
/// Blocks for some seconds at most and gives up at once when `stop` is requested. Never fails: what
/// cannot be learnt is absent. Opens no other file and no network address that the file may name.
Timing timing(const std::filesystem::path& file, const std::stop_token& stop = {});

} // namespace slatewise::MediaFile
