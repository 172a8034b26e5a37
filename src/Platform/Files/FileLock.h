#pragma once

#include "Platform/FileDescriptor.h"

#include <chrono>
#include <filesystem>

namespace slatewise {

/// Keeps other programs, and other locks in this one, out of what a file stands for. The file is
/// made if need be and stays. The system takes the lock back when the process dies, however it
/// does.
class FileLock {
public:
    /// Waits while another holds the lock, no longer than `patience`: whoever holds it may be
    /// suspended. Fails with `PosixError`, whose code is `EWOULDBLOCK` when the time ran out.
    FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience);

private:
    FileDescriptor file_;
};

} // namespace slatewise
