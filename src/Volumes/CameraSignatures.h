#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Folders by which a camera marks its card.
namespace slatewise::CameraSignatures {

/// The paths, relative to the root of a volume, that are there (files count too), in the order of
/// our table. A handful of look-ups, no walk. Blocks as long as the volume does; never fails.
std::vector<std::string> detect(const std::filesystem::path& root);

} // namespace slatewise::CameraSignatures
