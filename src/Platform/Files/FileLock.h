#pragma once

#include "Platform/Files/FileDescriptor.h"

#include <filesystem>

namespace slatewise {

/// Keeps other programs, and other locks in this one, out of what a file stands for. The file is
/// made if need be and stays. The system takes the lock back when the process dies, however it
/// does.
class FileLock {
public:
    /// Waits as long as another holds the lock. Fails with `PosixError`.
    explicit FileLock(const std::filesystem::path& file);

private:
    FileDescriptor file_;
};

} // namespace slatewise
