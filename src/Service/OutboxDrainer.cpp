#include "Service/OutboxDrainer.h"

#include "Platform/Error.h"
#include "Platform/Files/FileLock.h"
#include "Platform/Worker.h"
#include "Storage/AppLog.h"

#include <QPromise>

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

private:
    static QFuture<void>& last() {
        static QFuture<void> future;
        return future;
    }

    QPromise<void> end_;
    QFuture<void> before_;
};

/// Keeps other programs off the same store; empty where a store has no file to lock beside.
std::shared_ptr<FileLock> lockStore(const AppDatabase& database) {
    auto file = database.file();
    if (file.empty())
        return nullptr;
    file += "-outbox.lock";
    try {
        return std::make_shared<FileLock>(file);
    } catch (const Error& failure) {
        AppLog::append("Outbox not locked: " + failure.localizedDescription());
        return nullptr;
    }
}

/// The stored report, empty when the row is gone.
std::shared_ptr<const OutboxPayload> readPayload(const AppDatabase& database, std::int64_t id) {
    const auto row = database.outboxRow(id);
    if (!row)
        return nullptr;
    return std::make_shared<const OutboxPayload>(OutboxPayload::decode(row->payload));
}

/// Delivers one report and takes it off the store.
QCoro::Task<void> deliver(AppDatabase database, DirectSaaSClient client, std::int64_t id) {
    const auto reading = onWorker([=] { return readPayload(database, id); });
    auto payload = co_await reading;
    if (!payload)
        co_return;
    co_await client.flush(payload);
    const auto deleting =
        onWorker([database, id, delivered = std::exchange(payload, nullptr)]() mutable {
            database.deleteOutbox(id);
        });
    co_await deleting;
}

QCoro::Task<void> tryToDeliver(AppDatabase database, DirectSaaSClient client, std::int64_t id) {
    std::string failure;
    try {
        co_await deliver(database, client, id);
        co_return;
    } catch (const std::exception& thrown) {
        failure = describe(thrown);
    }
    const auto counting = onWorker([=]() mutable { database.bumpOutbox(id, failure); });
    co_await counting;
}

QCoro::Task<void> drainStore(AppDatabase database, DirectSaaSClient client) {
    const Turn turn;
    co_await turn.before();
    const auto locking = onWorker([=] { return lockStore(database); });
    const auto lock = co_await locking;
    co_await client.presence();
    std::vector<std::int64_t> pending;
    try {
        const auto listing = onWorker([=] { return database.pendingOutboxIDs(); });
        pending = co_await listing;
    } catch (const std::exception&) {
        co_return;
    }
    for (const auto id : pending) {
        try {
            co_await tryToDeliver(database, client, id);
        } catch (const std::exception&) {
            // The failure could not even be counted; the report is still there.
        }
    }
}

} // namespace

OutboxDrainer::OutboxDrainer(AppDatabase& database, HttpSession::Limits limits)
    : database_(database), limits_(limits) {}

QCoro::Task<void> OutboxDrainer::drain(std::optional<SaaSProfile> profile) const {
    if (!profile || profile->accountID.empty() || profile->saasAPIURL.empty())
        co_return;
    DirectSaaSClient client{.profile = std::move(*profile), .limits = limits_};
    co_await drainStore(database_, std::move(client));
}

} // namespace slatewise
