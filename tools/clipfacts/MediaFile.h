#pragma once

#include "Platform/MediaTiming.h"

#include <filesystem>

namespace slatewise::MediaFile {

/// Looks into a file's headers, and into a little of its content where they leave something open.
/// Gives up after some seconds. Never fails: what cannot be learnt is absent. Opens no other file
/// and no network address that the file may name.
MediaTiming timing(const std::filesystem::path& file);

} // namespace slatewise::MediaFile
