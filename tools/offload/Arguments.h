#pragma once

#include "Language/AppLanguage.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace slatewise::tool {

enum class Output { Progress, ErrorsOnly };

/// What the command line asks for. Folders are as they were typed; no disk has been asked yet.
struct Arguments {
    std::string camera;
    std::string crew;
    /// Absent: what the user's settings say. So are the next two.
    std::optional<std::string> project;
    std::optional<std::string> folderTemplate;
    std::optional<AppLanguage> language;
    bool hashOnly = false;
    /// Absent: what the user's settings say.
    std::optional<bool> writesHashList;
    std::vector<std::string> excludes;
    Output output = Output::Progress;
    /// May be empty where nothing is to be copied.
    std::vector<std::string> destinations;
    /// "CARD", or "CARD=CAMERA,CREW".
    std::vector<std::string> cards;
};

/// The program is to end at once with this code: everything there was to say has been said.
struct ExitCode {
    int value;
};

/// Reads the command line. What is wrong with it is said on standard error.
std::variant<Arguments, ExitCode> parseArguments(int count, const char* const* words);

} // namespace slatewise::tool
