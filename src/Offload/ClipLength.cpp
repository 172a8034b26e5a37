#include "Offload/ClipLength.h"

#include "Offload/TimecodeFormat.h"
#include "Platform/Numbers.h"

#include <cmath>

namespace slatewise {

namespace {

/// More than a century of any camera's pictures; whoever says so does not know.
constexpr std::int64_t kMostPictures = 1'000'000'000'000;

std::optional<FrameRate> exact(std::optional<double> perSecond) {
    return perSecond ? FrameRate::near(*perSecond) : std::nullopt;
}

/// The pictures are exact where they tell the same length as the seconds, which may be rounded.
std::optional<double> secondsOf(const ClipLength& length, std::optional<FrameRate> capture) {
    constexpr double kRounding = 0.002;
    if (!length.pictures || !capture)
        return length.seconds;
    const double counted = static_cast<double>(*length.pictures) *
                           static_cast<double>(capture->seconds()) /
                           static_cast<double>(capture->frames());
    const bool isTheSame = !length.seconds || std::abs(*length.seconds - counted) < kRounding;
    return isTheSame ? counted : length.seconds;
}

std::int64_t framesUnderWay(std::int64_t pictures, FrameRate capture, FrameRate timecode) {
    using Wide = __int128;
    const auto scaled = Wide{pictures} * timecode.frames() * capture.seconds();
    const auto divisor = Wide{capture.frames()} * timecode.seconds();
    return static_cast<std::int64_t>((scaled + divisor - 1) / divisor);
}

std::optional<std::int64_t> framesOf(const ClipLength& length, std::optional<FrameRate> capture,
                                     FrameRate timecode) {
    if (!length.pictures || !capture)
        return length.seconds ? TimecodeFormat::framesIn(*length.seconds, timecode) : std::nullopt;
    if (capture->nominal() == timecode.nominal())
        return length.pictures;
    return framesUnderWay(*length.pictures, *capture, timecode);
}

} // namespace

std::optional<double> rateOfTimecode(std::optional<double> told, std::optional<double> pictures) {
    if (!told || !pictures)
        return told ? told : pictures;
    const auto ofTimecode = exact(told);
    const auto ofPictures = exact(pictures);
    if (!ofTimecode || !ofPictures)
        return told;
    // Of two that are the same, the exact one.
    if (ofTimecode->nominal() == ofPictures->nominal())
        return ofTimecode == ofPictures && told == ofTimecode->perSecond() ? told : pictures;
    const auto picturesPerFrame = ofPictures->nominal() / ofTimecode->nominal();
    const bool isRounded = ofTimecode->seconds() == 1 &&
                           ofPictures->nominal() == ofTimecode->nominal() * picturesPerFrame;
    return isRounded ? *pictures / static_cast<double>(picturesPerFrame) : told;
}

void countFrames(const ClipLength& told, MediaMetadata& facts) {
    auto length = told;
    if (length.pictures && (*length.pictures < 1 || *length.pictures > kMostPictures))
        length.pictures.reset();
    const auto capture = exact(facts.captureFps);
    if (const auto seconds = secondsOf(length, capture))
        facts.durationSeconds = Numbers::rounded(*seconds, 2);
    const auto rate = facts.timecodeRate ? exact(facts.timecodeRate) : capture;
    const auto frames = rate ? framesOf(length, capture, *rate) : std::nullopt;
    if (!frames)
        return;
    const auto counting = TimecodeFormat::countingOf(facts.timecodeDropFrame);
    facts.durationTC = TimecodeFormat::text(*frames, *rate, counting);
    if (!facts.timecodeStart)
        return;
    if (auto end = TimecodeFormat::lastFrame(*facts.timecodeStart, *frames, *rate, counting))
        facts.timecodeEnd = std::move(end);
}

} // namespace slatewise
