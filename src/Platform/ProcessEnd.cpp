#include "Platform/ProcessEnd.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>
#include <unistd.h>

namespace slatewise {

void endProcess(int exitCode) {
    std::cout.flush();
    std::cerr.flush();
    (void)std::fflush(nullptr);
    std::_Exit(exitCode);
}

namespace {

const char* programName = "";

/// A reason may hold a file's name, and that whatever a terminal takes for a command. One that is
/// very long loses its end, between two characters.
void print(const char* text) {
    constexpr std::size_t kLongest = 400;
    constexpr std::size_t kRestOfCharacter = 3;
    std::array<char, kLongest + kRestOfCharacter> shown{};
    std::size_t length = 0;
    for (; *text && length < shown.size(); ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (length >= kLongest && (byte & 0xc0) != 0x80)
            break;
        shown[length++] = byte < 0x20 || byte == 0x7f ? '?' : *text;
    }
    (void)!::write(STDERR_FILENO, shown.data(), length);
    constexpr std::string_view kCut = "…";
    if (*text)
        (void)!::write(STDERR_FILENO, kCut.data(), kCut.size());
}

/// Without memory of its own: there may be none left.
[[noreturn]] void endWithASentence() {
    const char* reason = "unknown";
    try {
        if (const auto failure = std::current_exception())
            std::rethrow_exception(failure);
    } catch (const std::bad_alloc&) {
        reason = "out of memory";
    } catch (const std::exception& failure) {
        reason = failure.what();
    } catch (...) {
        reason = "an unknown failure";
    }
    for (const char* part : {programName, ": ended by ", reason})
        print(part);
    (void)!::write(STDERR_FILENO, "\n", 1);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void sayWhatEndsIt(const char* program) {
    programName = program;
    std::set_terminate(endWithASentence);
    (void)std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace slatewise
