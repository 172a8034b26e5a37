#include "support/TestMain.h"

#include "support/Leftovers.h"

#include <gmock/gmock.h>

#include <QByteArray>

#include <ctime>

namespace slatewise::test {

/// The zone is far from UTC, so that no date passes for another by chance.
void prepareTests(int* argc, char** argv) {
    ::testing::InitGoogleMock(argc, argv);
    qputenv("TZ", "Europe/Istanbul");
    ::tzset();
    if (!qEnvironmentVariableIsSet("LC_ALL"))
        qputenv("LC_ALL", "C.UTF-8");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    removeLeftovers();
}

} // namespace slatewise::test
