#pragma once

#include "Platform/FrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

/// What the media library knows of a file's timing. Every number is finite and above 0.
struct MediaTiming {
    std::optional<double> durationSeconds;
    /// Of the first video track.
    std::optional<FrameRate> frameRate;
    std::optional<std::int64_t> frameCount;
    /// Of the first timecode track.
    std::optional<FrameRate> timecodeRate;
    /// Of the first frame; with a semicolon when numbers are dropped: "01:00:00;00".
    std::optional<std::string> timecode;

    /// One line for each fact that there is, as one program tells it to another.
    std::string lines() const;

    /// Reads what `lines` gave. What is no fact is passed over.
    static MediaTiming fromLines(std::string_view text);

    friend bool operator==(const MediaTiming&, const MediaTiming&) = default;
};

} // namespace slatewise
