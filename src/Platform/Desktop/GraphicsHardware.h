#pragma once

#include <filesystem>

namespace slatewise::GraphicsHardware {

/// Whether this machine has a graphics processor with a driver, by the device files in that folder.
/// OpenGL itself is not asked: without hardware it answers with a compiler and its threads, which
/// cost more memory than the whole window.
bool isPresent(const std::filesystem::path& devices = "/dev");

} // namespace slatewise::GraphicsHardware
