#pragma once

#include <filesystem>

/// The system's own tool for taking away a file system, which may let users do what a call of ours
/// may not.
namespace slatewise::Umount {

/// Gives the tool's exit status, 0 when all went well, and -1 when it has not come to an end within
/// five minutes. Fails with `PosixError` when it cannot be started.
int run(const std::filesystem::path& mountPoint);

} // namespace slatewise::Umount
