#pragma once

#include <filesystem>
#include <string>

/// The system's own tool for taking away a file system, which may let users do what a call of ours
/// may not.
namespace slatewise::Umount {

struct Result {
    /// The tool's exit status, 0 when all went well, and -1 when it has not come to an end within
    /// five minutes.
    int status = 0;
    /// What it complained of last, in English and without the path.
    std::string words;
};

/// Fails with `PosixError` when the tool cannot be started.
Result run(const std::filesystem::path& mountPoint);

} // namespace slatewise::Umount
