#include "Service/OutboxDrainer.h"

#include <QCoreApplication>

/// Drains a store once: <store> <service's address>. Made to be killed at any moment.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    slatewise::AppDatabase database(argv[1]);
    const slatewise::OutboxDrainer drainer(database);
    QCoro::waitFor(drainer.drain(
        slatewise::SaaSProfile{.accountID = "acc", .saasAPIURL = argv[2], .presenceToken = ""}));
    return 0;
}
