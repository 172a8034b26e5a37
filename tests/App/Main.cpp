#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleHints>

/// On a bus of the tests' own: nothing of them shows on the desktop of whoever runs them.
int main(int argc, char** argv) {
    slatewise::test::prepareTests(&argc, argv);
    const slatewise::test::PrivateBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.address()));
    const QApplication application(argc, argv);
    // Copy and Stop take no click for as long after they changed places.
    constexpr int kDoubleClickMilliseconds = 100;
    QApplication::styleHints()->setMouseDoubleClickInterval(kDoubleClickMilliseconds);
    return RUN_ALL_TESTS();
}
