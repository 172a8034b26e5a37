#include "Arguments.h"
#include "ExitCodes.h"
#include "Interruption.h"
#include "OffloadBatch.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Text.h"
#include "Platform/UserDefaults.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <iostream>

namespace {

using namespace slatewise;

/// The user's settings, with what the command line says instead. Whether anything is copied is the
/// command line's word alone: a script must not depend on a switch in a window.
OffloadSettings settingsFor(const tool::Arguments& arguments, const UserDefaults& defaults) {
    auto settings = OffloadSettings::load(defaults);
    settings.verifyOnly = arguments.hashOnly;
    if (arguments.folderTemplate)
        settings.folderTemplate = *arguments.folderTemplate;
    if (arguments.project)
        settings.projectName = *arguments.project;
    for (const auto& name : arguments.excludes)
        settings.addExclude(name);
    return settings;
}

/// Control characters would break the lines that scripts read.
std::string fieldText(const std::filesystem::path& path) {
    return Text::replaced(Text::replaced(path.native(), "\t", "?"), "\n", "?");
}

/// Gives whether whoever reads the results has got them.
bool print(const std::vector<tool::PairResult>& results) {
    for (const auto& result : results) {
        std::cout << result.status << '\t' << fieldText(result.sessionRoot) << '\t'
                  << fieldText(result.reportFolder) << '\n';
    }
    return static_cast<bool>(std::cout.flush());
}

int exitCode(const std::vector<tool::PairResult>& results) {
    const bool anyFailed = std::any_of(results.begin(), results.end(), [](const auto& result) {
        return result.status == OutcomeStatus::failed;
    });
    return anyFailed ? tool::kExitOffloadFailed : tool::kExitSuccess;
}

int offload(const tool::Arguments& arguments) {
    auto& defaults = UserDefaults::standard();
    if (arguments.language)
        Language::overrideForThisProcess(*arguments.language, defaults);
    const tool::Texts texts(Language::load(defaults));
    tool::Interruption interruption;
    tool::ProgressDisplay display(texts, arguments.output);
    tool::OffloadBatch batch(arguments, settingsFor(arguments, defaults), texts, display,
                             interruption.token());
    const auto results = batch.run();
    const int code = print(results) ? exitCode(results) : tool::kExitOffloadFailed;
    return code != tool::kExitSuccess && interruption.happened() ? tool::kExitInterrupted : code;
}

} // namespace

int main(int count, char** words) {
    std::setlocale(LC_ALL, "");
    // Whoever watched the progress may go; the copy goes on.
    std::signal(SIGPIPE, SIG_IGN);
    const auto parsed = tool::parseArguments(count, words);
    if (const auto* code = std::get_if<tool::ExitCode>(&parsed))
        return code->value;
    return offload(std::get<tool::Arguments>(parsed));
}
