#include "support/TestMain.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

/// Timers, coroutines, fonts and drawing need an application; none of them needs a screen.
int main(int argc, char** argv) {
    slatewise::test::prepareTests(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
