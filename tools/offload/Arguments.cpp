#include "Arguments.h"

#include "ExitCodes.h"
#include "Platform/AppInfo.h"
#include "UsageFailure.h"

#include <CLI/CLI.hpp>

namespace slatewise::tool {

namespace {

constexpr const char* kDescription =
    "Copies camera cards to one or more destinations, proves every file by reading the copy back\n"
    "from the disk, and leaves a report set beside the footage. Every card goes to every\n"
    "destination, one pair at a time. What no option settles is taken from your settings.";

constexpr const char* kFooter =
    "--to takes one destination; every word without an option is a card. A card with a camera and\n"
    "a crew of its own is named CARD=CAMERA,CREW. What has report sets, as a destination does, is "
    "a\n"
    "card only when it is named so.\n\n"
    "Standard output gets one line per pair: STATUS<TAB>SESSION_ROOT<TAB>REPORT_FOLDER.\n"
    "Exit status: 0 all verified or hashed, 1 an offload failed, 2 wrong usage, 130 interrupted.";

std::vector<std::string> rawLanguages() {
    std::vector<std::string> values;
    values.reserve(Language::allCases.size());
    for (const auto language : Language::allCases)
        values.emplace_back(Language::rawValue(language));
    return values;
}

std::optional<AppLanguage> languageNamed(std::string_view rawValue) {
    for (const auto language : Language::allCases) {
        if (Language::rawValue(language) == rawValue)
            return language;
    }
    return std::nullopt;
}

/// What is turned into something else once it is read.
struct Typed {
    std::string language;
    bool quiet = false;
};

void declareOptions(CLI::App& program, Arguments& arguments, Typed& typed) {
    program.set_version_flag("--version",
                             std::string("slatewise-offload ") + std::string(AppInfo::version));
    program.add_option("--camera", arguments.camera, "Camera unit of the cards")->type_name("NAME");
    program.add_option("--crew", arguments.crew, "Crew of the cards")->type_name("NAME");
    program.add_option("--project", arguments.project, "Project name")->type_name("NAME");
    program
        .add_option("--template", arguments.folderTemplate,
                    "Path of a session, such as {Dest}/{YYYY-MM-DD}/{Cam}/{CardName}")
        ->type_name("TEXT");
    program.add_flag("--hash-only", arguments.hashOnly,
                     "Hash the cards and copy nothing; needs no --to");
    program.add_flag("--mhl,!--no-mhl", arguments.writesHashList,
                     "Write an ASC Media Hash List beside each copy, or write none");
    program
        .add_option("--exclude", arguments.excludes,
                    "Name of files or folders not to copy (again for more)")
        ->type_name("NAME")
        ->allow_extra_args(false);
    program.add_option("--language", typed.language, "Language of progress and reports")
        ->type_name("en|tr")
        ->check(CLI::IsMember(rawLanguages()).description(""));
    program.add_flag("--quiet", typed.quiet, "No progress, errors only");
    program
        .add_option("--to", arguments.destinations,
                    "One destination folder or disk (--to again for each more)")
        ->type_name("DEST")
        ->allow_extra_args(false);
    program.add_option("CARD", arguments.cards, "Mounted card or folder, or CARD=CAMERA,CREW")
        ->required()
        ->option_text("...");
}

} // namespace

std::variant<Arguments, ExitCode> parseArguments(int count, const char* const* words) {
    CLI::App program(kDescription, "slatewise-offload");
    program.footer(kFooter);
    tellUsageFailuresPlainly(program, languageOf(count, words));
    Arguments arguments;
    Typed typed;
    declareOptions(program, arguments, typed);
    try {
        program.parse(count, words);
        if (arguments.destinations.empty() && !arguments.hashOnly)
            throw CLI::RequiredError("--to");
        arguments.output = typed.quiet ? Output::ErrorsOnly : Output::Progress;
        arguments.language = languageNamed(typed.language);
        return arguments;
    } catch (const CLI::ParseError& failure) {
        // Asking for help ends here too, with success.
        return ExitCode{program.exit(failure) == 0 ? kExitSuccess : kExitWrongUsage};
    }
}

} // namespace slatewise::tool
