#pragma once

#include "Language/AppLanguage.h"
#include "offload/Arguments.h"

#include "Verify/TreeCheck.h"

#include <filesystem>
#include <optional>
#include <variant>
#include <vector>

namespace slatewise::tool {

/// What the command line asks for.
struct VerifyArguments {
    std::vector<std::filesystem::path> paths;
    /// Absent: what the user's settings say.
    std::optional<AppLanguage> language;
    Output output = Output::Progress;
    Verify::Keep keep = Verify::Keep::Nothing;
};

/// Reads the command line. What is wrong with it is said on standard error.
std::variant<VerifyArguments, ExitCode> parseVerifyArguments(int count, const char* const* words);

} // namespace slatewise::tool
