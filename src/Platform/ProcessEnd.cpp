#include "Platform/ProcessEnd.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <unistd.h>

namespace slatewise {

void endProcess(int exitCode) {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

namespace {

const char* programName = "";

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
    for (const char* part : {programName, ": ended by ", reason, "\n"})
        (void)!::write(STDERR_FILENO, part, std::strlen(part));
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void sayWhatEndsIt(const char* program) {
    programName = program;
    std::set_terminate(endWithASentence);
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace slatewise
