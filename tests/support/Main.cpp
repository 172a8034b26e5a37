#include <gmock/gmock.h>

#include <QGuiApplication>

/// Timers, coroutines, fonts and drawing need an application; none of them needs a screen.
int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
