#pragma once

#include "Offload/MediaMetadata.h"

#include <string_view>

/// What the JSON of the `mediainfo` tool says about a clip. Pure.
///
/// The JSON is loosely typed and differs from container to container: every value is looked for in
/// several places and read leniently. What is not understood is absent; nothing fails.
namespace slatewise::MediaInfoJSON {

MediaMetadata metadata(std::string_view bytes);

} // namespace slatewise::MediaInfoJSON
