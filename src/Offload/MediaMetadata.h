#pragma once

#include <optional>
#include <span>
#include <string>

namespace slatewise {

/// Camera and clip facts of one file. Every field may be absent.
struct ClipEssence {
    std::optional<std::string> cameraModel, cameraSerial, cameraId, supVersion, production,
        location, company, recordedDate, codec, codecProfile;
    std::optional<int> width, height;
    std::optional<std::string> gamma;
    std::optional<int> whiteBalanceK;
    std::optional<double> shutterDegrees;
    std::optional<std::string> lens, sxsSerial;
    std::optional<double> sensorFps, projectFps;
    std::optional<int> exposureIndex;
    std::optional<std::string> lookName;

    bool isEmpty() const { return *this == ClipEssence(); }

    /// Field by field, the value on which all essences that have one agree.
    static ClipEssence common(std::span<const ClipEssence* const> essences);

    friend bool operator==(const ClipEssence&, const ClipEssence&) = default;
};

/// Calls `visit(name, member)` for every field, in order; `member` is a pointer to member. The one
/// list of fields behind everything that treats them alike.
template <typename Visit>
void forEachEssenceField(Visit&& visit) {
    visit("cameraModel", &ClipEssence::cameraModel);
    visit("cameraSerial", &ClipEssence::cameraSerial);
    visit("cameraId", &ClipEssence::cameraId);
    visit("supVersion", &ClipEssence::supVersion);
    visit("production", &ClipEssence::production);
    visit("location", &ClipEssence::location);
    visit("company", &ClipEssence::company);
    visit("recordedDate", &ClipEssence::recordedDate);
    visit("codec", &ClipEssence::codec);
    visit("codecProfile", &ClipEssence::codecProfile);
    visit("width", &ClipEssence::width);
    visit("height", &ClipEssence::height);
    visit("gamma", &ClipEssence::gamma);
    visit("whiteBalanceK", &ClipEssence::whiteBalanceK);
    visit("shutterDegrees", &ClipEssence::shutterDegrees);
    visit("lens", &ClipEssence::lens);
    visit("sxsSerial", &ClipEssence::sxsSerial);
    visit("sensorFps", &ClipEssence::sensorFps);
    visit("projectFps", &ClipEssence::projectFps);
    visit("exposureIndex", &ClipEssence::exposureIndex);
    visit("lookName", &ClipEssence::lookName);
}

/// What a probe says about one media file. Every field may be absent.
struct MediaMetadata {
    /// "HH:MM:SS:FF", always with colons; so are the two below.
    std::optional<std::string> timecodeStart;
    std::optional<std::string> timecodeEnd;
    std::optional<std::string> durationTC;
    /// Rounded to 2 decimals.
    std::optional<double> durationSeconds;
    /// Frames per second at which the camera recorded.
    std::optional<double> captureFps;
    /// Frames per second in which the timecode counts.
    std::optional<double> timecodeRate;
    std::optional<bool> timecodeDropFrame;
    std::optional<ClipEssence> essence;

    friend bool operator==(const MediaMetadata&, const MediaMetadata&) = default;
};

/// Calls `visit(key, member)` for every field, in order; `member` is a pointer
/// to member.
template <typename Visit>
void forEachMediaField(Visit&& visit) {
    visit("timecode_start", &MediaMetadata::timecodeStart);
    visit("timecode_end", &MediaMetadata::timecodeEnd);
    visit("duration_tc", &MediaMetadata::durationTC);
    visit("duration_seconds", &MediaMetadata::durationSeconds);
    visit("capture_fps", &MediaMetadata::captureFps);
    visit("timecode_rate", &MediaMetadata::timecodeRate);
    visit("timecode_drop_frame", &MediaMetadata::timecodeDropFrame);
    visit("essence", &MediaMetadata::essence);
}

} // namespace slatewise
