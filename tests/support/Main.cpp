#include <gmock/gmock.h>

#include <QGuiApplication>

#include <ctime>

/// Timers, coroutines, fonts and drawing need an application; none of them needs a screen. The zone
/// is far from UTC, so that no date passes for another by chance.
int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    qputenv("TZ", "Europe/Istanbul");
    ::tzset();
    if (!qEnvironmentVariableIsSet("LC_ALL"))
        qputenv("LC_ALL", "C.UTF-8");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
