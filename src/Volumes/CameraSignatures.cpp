#include "Volumes/CameraSignatures.h"

#include "Platform/Files/FileSystem.h"

#include <array>

namespace slatewise::CameraSignatures {

namespace {
constexpr std::array kPaths = {"DCIM", "PRIVATE/M4ROOT", "PRIVATE/AVCHD", "XDROOT",
                               "BPAV", ".RDC",           "BDMV",          "CANONMSC",
                               "MISC", "CONTENTS",       "CLIP"};
} // namespace

std::vector<std::string> detect(const std::filesystem::path& root) {
    std::vector<std::string> found;
    for (const char* path : kPaths) {
        if (FileSystem::attributesIfAny(root / path))
            found.emplace_back(path);
    }
    return found;
}

} // namespace slatewise::CameraSignatures
