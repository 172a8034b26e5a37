#pragma once

#include "Offload/MediaMetadata.h"

#include <filesystem>
#include <string_view>

/// What a sound recorder writes into a WAV file beside the sound: when the take began ("bext") and
/// at which rate the set counted ("iXML").
namespace slatewise::WavFile {

/// Timing of a recording. Reads chunk headers and the few chunks of interest, however large the
/// file and whatever sizes it claims. A file that is no WAV or cannot be read has none; never
/// fails.
MediaMetadata timing(const std::filesystem::path& file);

/// Rate and way of counting as an iXML text has them.
struct Speed {
    std::optional<double> timecodeRate;
    std::optional<bool> dropFrame;
};

Speed speedIn(std::string_view iXML);

} // namespace slatewise::WavFile
