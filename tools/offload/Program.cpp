#include "Program.h"

#include "ExitCodes.h"

#include "Platform/Error.h"
#include "Platform/ProcessEnd.h"
#include "Platform/Text.h"
#include "Storage/AppLog.h"

#include <QCoreApplication>

#include <clocale>
#include <csignal>
#include <iostream>
#include <optional>

namespace slatewise::tool {

void runProgram(std::string_view name, int count, char** words, const Work& work) {
    (void)std::setlocale(LC_ALL, "");
    // Whoever watched the progress may go; the work goes on.
    (void)std::signal(SIGPIPE, SIG_IGN);
    sayWhatEndsIt(name.data());
    // They outlive what fails, and end with the process.
    std::optional<Interruption> interruption;
    std::optional<QCoreApplication> application;
    // What the toolkit has to say is for the log, not between results and progress.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
        AppLog::append(message.toStdString());
    });
    int exitCode = kExitOffloadFailed;
    try {
        // Before there is any other thread.
        interruption.emplace();
        application.emplace(count, words);
        exitCode = work(count, words, *interruption);
    } catch (const std::exception& failure) {
        // What a library says may be of any length.
        constexpr std::size_t kLongestReason = 400;
        std::cerr << name << ": "
                  << Text::shortened(Text::visible(describe(failure)), kLongestReason) << '\n';
    }
    endProcess(exitCode);
}

} // namespace slatewise::tool
