#include "Service/OutboxDrainer.h"

#include "Platform/Error.h"
#include "Platform/Files/FileLock.h"
#include "Platform/Worker.h"
#include "Service/DirectSaaSClient.h"
#include "Storage/AppLog.h"

#include <QPromise>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <list>

namespace slatewise {

namespace {

/// A place in the queue of drains, held until destroyed. GUI thread.
class Turn {
public:
    Turn() : before_(std::exchange(last(), end_.future())) { end_.start(); }
    ~Turn() { end_.finish(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// Ends when all that came before have ended.
    QFuture<void> before() const { return before_; }
    /// Ends when this one does.
    QFuture<void> end() const { return end_.future(); }

    /// The end of the latest.
    static QFuture<void>& last() {
        static QFuture<void> future;
        return future;
    }

private:
    QPromise<void> end_;
    QFuture<void> before_;
};

/// A drain that was asked for and has not begun.
struct WaitingDrain {
    AppDatabase database;
    SaaSProfile profile;
    QFuture<void> end;
};

/// GUI thread.
std::list<WaitingDrain>& waitingDrains() {
    static std::list<WaitingDrain> drains;
    return drains;
}

/// Keeps other programs off the same store; empty where a store has no file to lock beside. Fails
/// when another program does not let go of it.
std::shared_ptr<FileLock> lockStore(const AppDatabase& database,
                                    std::chrono::milliseconds patience) {
    // Asked first: what is in memory is moved to the file at any time.
    auto file = database.awaited();
    if (file.empty())
        file = database.file();
    if (file.empty())
        return nullptr;
    file += "-outbox.lock";
    try {
        return std::make_shared<FileLock>(file, patience);
    } catch (const PosixError& failure) {
        if (failure.code() == EWOULDBLOCK)
            throw;
        AppLog::append("Outbox not locked: " + failure.localizedDescription());
        return nullptr;
    }
}

/// A report that the service has.
struct DeliveredReport {
    AppDatabase database;
    std::int64_t id;

    bool operator==(const DeliveredReport& other) const {
        return id == other.id && database.isSame(other.database);
    }
};

/// Those that could not be taken off their store yet. GUI thread.
std::list<DeliveredReport>& deliveredReports() {
    static std::list<DeliveredReport> reports;
    return reports;
}

/// The stored report, empty when the row is gone.
std::shared_ptr<const OutboxPayload> readPayload(const AppDatabase& database, std::int64_t id) {
    const auto row = database.outboxRow(id);
    if (!row)
        return nullptr;
    return std::make_shared<const OutboxPayload>(OutboxPayload::decode(row->payload));
}

/// Sends one report and gives what was sent, null when the row is gone.
QCoro::Task<std::shared_ptr<const OutboxPayload>> send(AppDatabase database,
                                                       DirectSaaSClient client, std::int64_t id) {
    const auto reading = onWorker([=] { return readPayload(database, id); });
    auto payload = co_await reading;
    if (payload)
        co_await client.flush(payload);
    co_return payload;
}

/// Fails where the store takes no note of what became of it.
QCoro::Task<void> deliver(AppDatabase database, DirectSaaSClient client, std::int64_t id) {
    const DeliveredReport report = {database, id};
    auto& delivered = deliveredReports();
    std::shared_ptr<const OutboxPayload> payload;
    if (std::find(delivered.begin(), delivered.end(), report) == delivered.end()) {
        std::optional<std::string> failure;
        try {
            payload = co_await send(database, client, id);
        } catch (const std::exception& thrown) {
            failure = describe(thrown);
        }
        if (failure) {
            const auto counting = onWorker([=]() mutable { database.bumpOutbox(id, *failure); });
            co_await counting;
        }
        if (!payload)
            co_return;
        delivered.push_back(report);
    }
    // A large one ends on the worker.
    const auto deleting =
        onWorker([database, id, done = std::exchange(payload, nullptr)]() mutable {
            database.deleteOutbox(id);
        });
    co_await deleting;
    delivered.remove(report);
}

/// Never fails.
QCoro::Task<void> deliverAll(AppDatabase database, DirectSaaSClient client,
                             std::chrono::milliseconds lockPatience) {
    std::shared_ptr<FileLock> lock;
    std::vector<std::int64_t> pending;
    try {
        const auto locking = onWorker([=] { return lockStore(database, lockPatience); });
        lock = co_await locking;
        co_await client.presence();
        const auto listing = onWorker([=] { return database.pendingOutboxIDs(); });
        pending = co_await listing;
    } catch (const std::exception& failure) {
        AppLog::append("Outbox not delivered: " + describe(failure));
        co_return;
    }
    for (const auto id : pending) {
        try {
            co_await deliver(database, client, id);
        } catch (const std::exception& failure) {
            // The report is still there.
            AppLog::append("Outbox not brought up to date: " + describe(failure));
        }
    }
}

QCoro::Task<void> drainInTurn(AppDatabase database, DirectSaaSClient client,
                              std::chrono::milliseconds lockPatience) {
    auto& waiting = waitingDrains();
    const auto same = std::find_if(waiting.begin(), waiting.end(), [&](const auto& other) {
        return other.database.isSame(database) && other.profile == client.profile;
    });
    if (same != waiting.end()) {
        const auto end = same->end;
        co_await end;
        co_return;
    }
    const Turn turn;
    const auto place = waiting.insert(waiting.end(), {database, client.profile, turn.end()});
    co_await turn.before();
    waiting.erase(place);
    co_await deliverAll(database, std::move(client), lockPatience);
}

QCoro::Task<void> finishAfter(QFuture<void> drains, std::shared_ptr<QPromise<bool>> over) {
    co_await drains;
    over->addResult(true);
    over->finish();
}

} // namespace

OutboxDrainer::OutboxDrainer(AppDatabase& database, HttpSession::Limits limits,
                             std::chrono::milliseconds lockPatience)
    : database_(database), limits_(limits), lockPatience_(lockPatience) {}

QCoro::Task<void> OutboxDrainer::drain(std::optional<SaaSProfile> profile) const {
    if (!profile || !profile->canBeReached())
        co_return;
    DirectSaaSClient client{.profile = std::move(*profile), .limits = limits_};
    co_await drainInTurn(database_, std::move(client), lockPatience_);
}

QCoro::Task<bool> OutboxDrainer::waitForAll(std::chrono::milliseconds patience) {
    const auto over = std::make_shared<QPromise<bool>>();
    over->start();
    QTimer::singleShot(patience, [over] {
        over->addResult(false);
        over->finish();
    });
    finishAfter(Turn::last(), over);
    const auto ending = over->future();
    co_await ending;
    co_return ending.resultAt(0);
}

} // namespace slatewise
