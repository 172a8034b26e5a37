#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace slatewise {

/// Base of every failure this program raises itself. `what()` is for a debugger; what a person
/// reads is `localizedDescription()`.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& description) : std::runtime_error(description) {}

    /// One sentence in the user's words. May be asked on any thread.
    virtual std::string localizedDescription() const { return what(); }
};

/// A system call that failed. Described as "<operation> <path>: <reason>",
/// for instance "write /media/X/A001.MOV: No space left on device". Of a very long path the middle
/// is left out.
class PosixError : public Error {
public:
    /// `code` is an errno value. The path may be any bytes; the description is valid UTF-8.
    PosixError(const std::string& operation, const std::filesystem::path& path, int code);

    int code() const noexcept { return code_; }

    /// The path as it stands in the description.
    const std::string& subject() const noexcept { return subject_; }

private:
    std::string subject_;
    int code_;
};

/// A FIFO, a socket or a device where a file should be.
class NotARegularFile : public Error {
public:
    explicit NotARegularFile(const std::filesystem::path& path);

    /// The path as it stands in the description.
    const std::string& subject() const noexcept { return subject_; }

private:
    std::string subject_;
};

/// The work was asked to stop. Never a sign that something is broken.
class CancellationError : public Error {
public:
    CancellationError() : Error("cancelled") {}
};

/// What a person should read about any exception, ours or a library's.
std::string describe(const std::exception& failure);

} // namespace slatewise
