#include "App/DitApplication.h"

#include "Language/L10n.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Error.h"
#include "Platform/ProcessEnd.h"
#include "Platform/Text.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"

#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace slatewise;

void tell(const std::string& sentence) {
    // What a library says may be of any length.
    constexpr std::size_t kLongestSentence = 400;
    const auto shown = Text::shortened(Text::visible(sentence), kLongestSentence);
    (void)std::fprintf(stderr, "slatewise-dit: %s\n", shown.c_str());
}

void tellOfFailure(const std::string& reason) {
    AppLog::append("Uygulama açılamadı: " + reason);
    tell(reason);
}

/// The toolkit aborts where it finds no display, as if it had crashed.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type != QtFatalMsg) {
        (void)std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
        return;
    }
    tellOfFailure(L10n::current().cannotStart(message.simplified().toStdString()));
    std::_Exit(EXIT_FAILURE);
}

int run() {
    DitApplication application(Surroundings::ofThisDesktop(UserDefaults::standard()));
    const int code = QGuiApplication::exec();
    application.noteEnd();
    UserDefaults::standard().waitUntilWritten();
    const auto l10n = L10n::current();
    if (const auto failure = application.model().state().database->writeWhatIsKept(l10n))
        tell(l10n.historyLost(*failure));
    // A copy that still runs ends here, as it would if the power went: nothing is flushed by hand,
    // and what it has written stays.
    if (application.model().batch()->isBusy())
        endProcess(code);
    return code;
}

int runWithDisplay(int count, char** words) {
    try {
        DitApplication::prepare();
        const auto usual = qInstallMessageHandler(endWithoutDisplay);
        QApplication qt(count, words);
        qInstallMessageHandler(usual);
        QGuiApplication::setWindowIcon(QIcon(":/slatewise/AppLogo.png"));
        try {
            return run();
        } catch (const std::exception& failure) {
            tellOfFailure(describe(failure));
            showStartFailure(describe(failure));
        }
    } catch (const std::exception& failure) {
        tellOfFailure(describe(failure));
    }
    return EXIT_FAILURE;
}

} // namespace

int main(int count, char** words) {
    // Whoever started this from a terminal may close it.
    (void)std::signal(SIGPIPE, SIG_IGN);
    sayWhatEndsIt("slatewise-dit");
    endProcess(runWithDisplay(count, words));
}
