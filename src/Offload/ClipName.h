#pragma once

#include <filesystem>
#include <string>

namespace slatewise {

/// How other programs are told of a clip.
struct ClipName {
    /// Absolute. May be a name under which a file that is held open is found by any program of this
    /// user, and then says nothing of what the file is called.
    std::filesystem::path path;
    /// For the log; bytes as the file system has them.
    std::string name;
};

} // namespace slatewise
