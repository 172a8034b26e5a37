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

/// From the length, and from rates, start and way of counting as `facts` has them already, to its
/// length in seconds, its length in timecode and its last timecode. A timecode that counts at
/// another rate than the pictures come has as many frames as there are pictures under way. What
/// cannot be counted is left as it is.
void countFrames(const ClipLength& length, MediaMetadata& facts);

} // namespace slatewise
