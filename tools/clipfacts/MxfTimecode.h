#pragma once

#include "Platform/FrameRate.h"

#include <optional>
#include <string_view>

/// What an MXF file says of its timecode and the media library keeps to itself.
namespace slatewise::MxfTimecode {

/// How far a timecode counts in what it calls a second, which is the rate or the whole number that
/// stands for it. `head` is the start of the file, as far as its header metadata goes. Nothing
/// where that tells of no timecode.
std::optional<FrameRate> roundedRate(std::string_view head);

} // namespace slatewise::MxfTimecode
