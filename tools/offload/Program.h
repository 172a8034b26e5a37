#pragma once

#include "Interruption.h"

#include <functional>
#include <string_view>

namespace slatewise::tool {

/// What a program does with its words, for an exit code. Ctrl-C asks it to stop.
using Work = std::function<int(int count, char** words, const Interruption& interruption)>;

/// Surrounds `work` with what the programs for a terminal have in common, and ends the process. A
/// failure it throws is told on standard error after the program's name.
[[noreturn]] void runProgram(std::string_view name, int count, char** words, const Work& work);

} // namespace slatewise::tool
