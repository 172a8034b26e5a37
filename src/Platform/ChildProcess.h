#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

/// Other programs, run to their end under limits. May be used on any thread, by several at a time;
/// a call blocks its own.
namespace slatewise::ChildProcess {

struct Command {
    /// Absolute: there is no search along PATH.
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    std::filesystem::path workingDirectory = "/";
    /// In place of what our own environment says of these variables.
    std::map<std::string, std::string> environment;
};

struct Limits {
    /// From the start to the end of the program and of its output.
    std::chrono::milliseconds run{15'000};
    /// From being asked to end to being killed.
    std::chrono::milliseconds grace{2'000};
    /// What the program, and each of those that it starts, may have in address space.
    std::uint64_t memoryBytes = std::uint64_t(2) * 1024 * 1024 * 1024;
    /// What lies beyond this many bytes of standard output is read and dropped.
    std::size_t outputBytes = std::size_t(16) * 1024 * 1024;
};

enum class End { Exited, TimedOut, Cancelled };

struct Result {
    End end = End::Exited;
    /// What the program gave when it exited, or the number of the signal that ended it.
    int status = 0;
    std::string standardOutput;
};

/// Runs a program with nothing on its standard input; what it writes to standard error is dropped.
/// The program has a process group of its own, which is ended as a whole when a limit is passed or
/// `stop` is requested: first asked, then killed.
///
/// Fails with `PosixError` when the program cannot be started.
Result run(const Command& command, const Limits& limits, const std::stop_token& stop = {});

} // namespace slatewise::ChildProcess
