#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The system's own tool for taking away a file system, which may let users do what a call of ours
/// may not.
namespace slatewise::Umount {

struct Refusal {
    int exitStatus = 0;
    std::string message;
};

/// Waits for the tool to end, since unmounting writes what is not yet on the disk. Nothing when all
/// went well. Fails with `PosixError` when the tool cannot be started.
std::optional<Refusal> run(const std::filesystem::path& mountPoint);

} // namespace slatewise::Umount
