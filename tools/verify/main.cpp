#include "VerifyArguments.h"
#include "VerifyTexts.h"

#include "Offload/OffloadError.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "offload/ExitCodes.h"
#include "offload/Program.h"
#include "offload/ProgressDisplay.h"

#include <iostream>

namespace {

using namespace slatewise;

/// Adds the generation and says what it could not hold.
void keep(const Verify::ListedTree& tree, Verify::Result& result, const tool::VerifyTexts& texts,
          tool::ProgressDisplay& display) {
    if (!result.isAllEqual())
        return display.note(texts.noGeneration());
    const auto settings = OffloadSettings::load(UserDefaults::standard());
    for (const auto& name : Verify::addGenerations(tree, result, settings))
        display.note(texts.nameLeftOut(name));
}

void print(std::string_view word, std::string_view path, tool::ProgressDisplay& display) {
    display.clearBar();
    std::cout << word << '\t' << Text::visible(path) << std::endl;
}

/// Gives whether all is there and equal.
bool verify(const std::filesystem::path& path, const tool::VerifyArguments& arguments,
            const tool::VerifyTexts& texts, tool::ProgressDisplay& display, std::stop_token stop) {
    display.show(Phase::Scanning());
    const auto tree = Verify::findLists(path, stop);
    const Verify::Watch watch = {
        .progress = [&](const OffloadPhase& phase) { display.show(phase); },
        .finding =
            [&](const Verify::Finding& finding) {
                print(rawValue(finding.difference), finding.path, display);
                const auto explanation = finding.explanation(texts.shared);
                if (!explanation.empty())
                    display.note(finding.path + ": " + explanation);
            }};
    auto result = Verify::check(tree, arguments.keep, watch, std::move(stop));
    const auto name = Text::displayable(tree.root.native());
    for (const auto& note : tree.notes)
        display.note(note.text(texts.shared));
    if (tree.isOnOtherDisk)
        display.note(texts.onOtherDisk(name));
    if (result.mayBeFromMemory)
        display.note(texts.fromMemory(name));
    else if (result.filesKeptInMemory > 0)
        display.note(texts.keptInMemory(result, name));
    if (result.isAllEqual())
        display.inform(texts.verdict(result, name));
    else
        display.note(texts.verdict(result, name));
    if (arguments.keep == Verify::Keep::Tree)
        keep(tree, result, texts, display);
    return result.isAllEqual();
}

int verifyAll(const tool::VerifyArguments& arguments, const std::stop_token& stop) {
    const auto language = arguments.language.value_or(Language::load(UserDefaults::standard()));
    const tool::Texts shared(language, tool::Texts::Search::Lists);
    const tool::VerifyTexts texts(language);
    tool::ProgressDisplay display(shared, arguments.output);
    const std::stop_callback stopping(stop, [&] { display.note(shared.stopping()); });
    bool isAllEqual = true;
    for (const auto& path : arguments.paths) {
        try {
            isAllEqual = verify(path, arguments, texts, display, stop) && isAllEqual;
        } catch (const CancellationError&) {
            display.note(shared.shared.cancelled());
            return tool::kExitInterrupted;
        } catch (const std::exception& failure) {
            print(rawValue(Verify::Difference::Failed), path.native(), display);
            display.note(shared.shared.failed(describe(failure, shared.shared)));
            isAllEqual = false;
        }
    }
    return isAllEqual && std::cout.flush() ? tool::kExitSuccess : tool::kExitOffloadFailed;
}

int run(int count, char** words, const tool::Interruption& interruption) {
    const auto parsed = tool::parseVerifyArguments(count, words);
    if (const auto* code = std::get_if<tool::ExitCode>(&parsed))
        return code->value;
    return verifyAll(std::get<tool::VerifyArguments>(parsed), interruption.token());
}

} // namespace

int main(int count, char** words) {
    tool::runProgram("slatewise-verify", count, words, run);
}
