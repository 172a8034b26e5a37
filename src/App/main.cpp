#include "App/DitApplication.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Error.h"
#include "Storage/AppLog.h"

#include <QGuiApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace slatewise;

int run() {
    DitApplication application(Surroundings::ofThisDesktop(UserDefaults::standard()));
    const int code = QGuiApplication::exec();
    application.noteEnd();
    // A copy that still runs ends here, as it would if the power went: nothing is flushed by hand,
    // and what it has written stays.
    if (application.model().batch()->isBusy())
        std::_Exit(code);
    return code;
}

} // namespace

int main(int count, char** words) {
    // Whoever started this from a terminal may close it.
    std::signal(SIGPIPE, SIG_IGN);
    DitApplication::prepare();
    QGuiApplication qt(count, words);
    QGuiApplication::setWindowIcon(QIcon(":/slatewise/AppLogo.png"));
    try {
        return run();
    } catch (const std::exception& error) {
        AppLog::append(std::string("Uygulama açılamadı: ") + error.what());
        std::fprintf(stderr, "slatewise-dit: %s\n", error.what());
        showStartFailure(error.what());
        return EXIT_FAILURE;
    }
}
