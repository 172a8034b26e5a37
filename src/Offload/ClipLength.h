#pragma once

#include "Offload/MediaMetadata.h"

#include <cstdint>
#include <optional>

namespace slatewise {

/// What somebody who knows a clip says of its length.
struct ClipLength {
    std::optional<std::int64_t> pictures;
    /// Perhaps rounded to milliseconds.
    std::optional<double> seconds;
};

/// The rate that a timecode counts at, of what is told of it and of the pictures. Some containers
/// write the whole number that it counts to in place of its rate, which may be one for every second
/// picture.
std::optional<double> rateOfTimecode(std::optional<double> told, std::optional<double> pictures);

/// From the length, and from rates, start and way of counting as `facts` has them already, to its
/// length in seconds, its length in timecode and its last timecode. A timecode that counts at
/// another rate than the pictures come has as many frames as there are pictures under way. What
/// cannot be counted is left as it is.
void countFrames(const ClipLength& length, MediaMetadata& facts);

} // namespace slatewise
