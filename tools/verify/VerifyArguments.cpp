#include "VerifyArguments.h"

#include "Platform/AppInfo.h"
#include "offload/ExitCodes.h"
#include "offload/UsageFailure.h"

#include <CLI/CLI.hpp>

namespace slatewise::tool {

namespace {

constexpr const char* kDescription = "Reads footage from its disk again, past the system's cache, "
                                     "and compares it with every list of\n"
                                     "checksums that belongs to it. PATH is a session's folder or "
                                     "one above several, a folder of reports,\n"
                                     "a manifest.json, a checksums.sha256, or a folder with an ASC "
                                     "Media Hash List.";

constexpr const char* kFooter =
    "Standard output gets one line per difference: WORD<TAB>PATH, where WORD is missing, changed,\n"
    "unreadable, new or unproved; damaged or failed for a list that is damaged or whose run "
    "failed;\n"
    "or failed for a PATH of which nothing could be checked.\n"
    "Exit status: 0 all there and equal, 1 something differs, 2 wrong usage, 130 interrupted.";

} // namespace

std::variant<VerifyArguments, ExitCode> parseVerifyArguments(int count, const char* const* words) {
    CLI::App program(kDescription, "slatewise-verify");
    program.footer(kFooter);
    tellUsageFailuresPlainly(program, languageOf(count, words));
    program.set_version_flag("--version",
                             std::string("slatewise-verify ") + std::string(AppInfo::version));
    std::vector<std::string> paths;
    std::string language;
    bool quiet = false;
    bool addsGeneration = false;
    program.add_flag("--quiet", quiet, "No progress, differences only");
    program.add_option("--language", language, "Language of progress and verdicts")
        ->type_name("en|tr")
        ->check(CLI::IsMember(std::vector<std::string>{"en", "tr"}).description(""));
    program.add_flag("--mhl", addsGeneration,
                     "Add what was read to the folder's hash list, when nothing differs");
    program.add_option("PATH", paths, "What to check")->required()->option_text("...");
    try {
        program.parse(count, words);
    } catch (const CLI::ParseError& failure) {
        // Asking for help ends here too, with success.
        return ExitCode{program.exit(failure) == 0 ? kExitSuccess : kExitWrongUsage};
    }
    VerifyArguments arguments;
    arguments.paths.assign(paths.begin(), paths.end());
    arguments.output = quiet ? Output::ErrorsOnly : Output::Progress;
    arguments.keep = addsGeneration ? Verify::Keep::Tree : Verify::Keep::Nothing;
    for (const auto each : Language::allCases) {
        if (Language::rawValue(each) == language)
            arguments.language = each;
    }
    return arguments;
}

} // namespace slatewise::tool
