#pragma once

#include "Platform/Text.h"

#include <CLI/CLI.hpp>

#include <string>

namespace slatewise::tool {

/// Has the program say what is wrong with its usage in one line of sane length, in which whatever
/// was typed acts on no terminal.
inline void tellUsageFailuresPlainly(CLI::App& program) {
    constexpr std::size_t kLongestSentence = 400;
    program.failure_message([](const CLI::App* of, const CLI::Error& failure) {
        return Text::shortened(Text::visible(failure.what()), kLongestSentence) + "\nRun " +
               of->get_name() + " --help for more information.\n";
    });
}

} // namespace slatewise::tool
