#include "Arguments.h"
#include "ExitCodes.h"
#include "Offload.h"
#include "Program.h"

#include "Offload/FolderTemplate.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"
#include "Storage/SupportPaths.h"

#include <algorithm>
#include <iostream>

namespace {

using namespace slatewise;

/// Gives whether whoever reads the results has got them.
bool print(const std::vector<PairResult>& results) {
    for (const auto& result : results) {
        std::cout << rawValue(result.status) << '\t' << Text::visible(result.sessionRoot.native())
                  << '\t' << Text::visible(result.reportFolder.native()) << '\n';
    }
    return static_cast<bool>(std::cout.flush());
}

int exitCode(const std::vector<PairResult>& results) {
    const bool allEndedWell = std::all_of(results.begin(), results.end(), [](const auto& result) {
        return endedWell(result.status);
    });
    return allEndedWell ? tool::kExitSuccess : tool::kExitOffloadFailed;
}

/// The language of this process, from here on. What is stored stays as it is.
AppLanguage languageFor(const tool::Arguments& arguments) {
    auto& defaults = UserDefaults::standard();
    defaults.keepChangesInMemory();
    if (arguments.language)
        Language::persist(*arguments.language, defaults);
    return Language::load(defaults);
}

/// The user's settings, with what the command line says instead. Whether anything is copied is the
/// command line's word alone: a script must not depend on a switch in a window.
OffloadSettings settingsFor(const tool::Arguments& arguments) {
    auto settings = OffloadSettings::load(UserDefaults::standard());
    settings.verifyOnly = arguments.hashOnly;
    settings.writesHashList = arguments.writesHashList.value_or(settings.writesHashList);
    settings.folderTemplate = arguments.folderTemplate.value_or(settings.folderTemplate);
    settings.projectName = arguments.project.value_or(settings.projectName);
    for (const auto& name : arguments.excludes)
        settings.addExclude(name);
    return settings;
}

/// What a token of the template stands for.
std::string wordFor(const char* token, const FolderTemplate::Values& values) {
    return FolderTemplate::expand(token, values).filename().native();
}

/// Whether the token's word becomes part of a path.
bool isInPath(std::string_view token, const OffloadSettings& settings) {
    return !settings.verifyOnly &&
           FolderTemplate::normalize(settings.folderTemplate).find(token) != std::string::npos;
}

/// Says which words stand for the card's camera and crew.
void tellOfWords(const tool::NamedFolder& card, const tool::Order& order, const tool::Texts& texts,
                 tool::ProgressDisplay& display) {
    FolderTemplate::Values values;
    values.destination = "/";
    values.camera = order.cameraOf(card);
    values.ekip = order.crewOf(card);
    const auto described = [&](const char* token, const std::string& given) {
        return tool::Texts::Word{.word = wordFor(token, values),
                                 .isNamed = !given.empty(),
                                 .isInPath = isInPath(token, order.settings)};
    };
    const auto camera = described("{Cam}", values.camera);
    const auto crew = described("{Ekip}", values.ekip);
    if (card.hasOwnWords())
        display.inform(texts.ownWords(card.volume.facts.mountPoint.native(), camera, crew));
    else if (!camera.isNamed || !crew.isNamed)
        display.inform(texts.wordsInUse(card.volume.name(), camera, crew));
}

/// Says what may not be what was meant, though nothing is wrong with it.
void tellOfChoices(const tool::Order& order, const tool::Texts& texts,
                   tool::ProgressDisplay& display) {
    for (const auto& card : order.folders.cards) {
        if (card.obstacle)
            continue;
        const auto& path = card.volume.facts.mountPoint.native();
        if (card.isEmpty && !card.isSurelyCard)
            display.note(order.settings.verifyOnly ? texts.emptyCardToHash(path)
                                                   : texts.emptyCard(path));
        tellOfWords(card, order, texts, display);
    }
}

int offload(tool::Arguments arguments, const tool::Interruption& interruption) {
    const auto stop = interruption.token();
    const tool::Texts texts(languageFor(arguments));
    tool::ProgressDisplay display(texts, arguments.output);
    const std::stop_callback stopping(stop, [&] { display.note(texts.stopping()); });

    tool::Order order{.settings = settingsFor(arguments),
                      .folders = {},
                      .camera = arguments.camera,
                      .crew = arguments.crew};
    if (FolderTemplate::leadsOut(order.settings.folderTemplate)) {
        display.note(texts.shared.templateLeadsOut(order.settings.folderTemplate));
        return tool::kExitWrongUsage;
    }
    if (arguments.destinations.empty())
        arguments.destinations = {SupportPaths::reportsArchive(order.settings)};
    order.folders = tool::lookAt(arguments, texts, stop);
    auto misuse = order.folders.misuse(texts);
    if (!misuse && !arguments.hashOnly)
        misuse = order.folders.misplacedDestination(texts);
    if (misuse) {
        display.note(*misuse);
        return tool::kExitWrongUsage;
    }
    tellOfChoices(order, texts, display);
    auto results = tool::Offload(order, texts, display).run(stop);
    if (arguments.hashOnly) {
        // Where copies would go is of no interest: nobody asked for any.
        for (auto& result : results)
            result.sessionRoot.clear();
    }
    const int code = print(results) ? exitCode(results) : tool::kExitOffloadFailed;
    return code != tool::kExitSuccess && interruption.happened() ? tool::kExitInterrupted : code;
}

int run(int count, char** words, const tool::Interruption& interruption) {
    auto parsed = tool::parseArguments(count, words);
    if (const auto* code = std::get_if<tool::ExitCode>(&parsed))
        return code->value;
    return offload(std::move(std::get<tool::Arguments>(parsed)), interruption);
}

} // namespace

int main(int count, char** words) {
    tool::runProgram("slatewise-offload", count, words, run);
}
