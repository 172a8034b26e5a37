#include "Arguments.h"
#include "ExitCodes.h"
#include "Interruption.h"
#include "Offload.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"
#include "Storage/AppLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <iostream>

namespace {

using namespace slatewise;

/// Control characters would break the lines that scripts read.
std::string fieldText(const std::filesystem::path& path) {
    return Text::replaced(Text::replaced(path.native(), "\t", "?"), "\n", "?");
}

/// Gives whether whoever reads the results has got them.
bool print(const std::vector<PairResult>& results) {
    for (const auto& result : results) {
        std::cout << rawValue(result.status) << '\t' << fieldText(result.sessionRoot) << '\t'
                  << fieldText(result.reportFolder) << '\n';
    }
    return static_cast<bool>(std::cout.flush());
}

int exitCode(const std::vector<PairResult>& results) {
    const bool anyFailed = std::any_of(results.begin(), results.end(), [](const auto& result) {
        return result.status == OutcomeStatus::Failed;
    });
    return anyFailed ? tool::kExitOffloadFailed : tool::kExitSuccess;
}

/// The language of this process, from here on. What is stored stays as it is.
AppLanguage languageFor(const tool::Arguments& arguments) {
    auto& defaults = UserDefaults::standard();
    defaults.keepChangesInMemory();
    if (arguments.language)
        Language::persist(*arguments.language, defaults);
    return Language::load(defaults);
}

int offload(const tool::Arguments& arguments, int count, char** words) {
    // Before there is any other thread.
    tool::Interruption interruption;
    // What the toolkit has to say is for the log, not between results and progress.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
        AppLog::append(message.toStdString());
    });
    const QCoreApplication application(count, words);
    const tool::Texts texts(languageFor(arguments));
    tool::ProgressDisplay display(texts, arguments.output);
    tool::Offload run(arguments, texts, display);
    const auto results = run.run(interruption.token());
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
    return offload(std::get<tool::Arguments>(parsed), count, words);
}
