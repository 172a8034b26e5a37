#include "Storage/StoreConnection.h"

#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Storage/AppLog.h"
#include "Storage/Migrations.h"

#include <fcntl.h>

#include <thread>
#include <utility>

namespace slatewise {

namespace {

/// SQLite's name for a file that is none.
constexpr auto* kInMemory = ":memory:";

/// The files beside it take over its rights.
void makePrivate(const std::filesystem::path& file) {
    constexpr mode_t kOwnersAlone = 0600;
    const FileDescriptor made(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnersAlone));
}

std::unique_ptr<SQLite::Database> open(const std::string& name,
                                       std::chrono::milliseconds patience) {
    auto database = std::make_unique<SQLite::Database>(
        name, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, static_cast<int>(patience.count()));
    database->exec("PRAGMA foreign_keys = ON");
    Migrations::apply(*database);
    return database;
}

/// The columns of a table but those that number its rows.
std::string columnsOf(SQLite::Database& database, const std::string& table) {
    SQLite::Statement query(database, "SELECT group_concat(name) FROM pragma_table_info(?) "
                                      "WHERE NOT (pk = 1 AND type = 'INTEGER')");
    query.bind(1, table);
    query.executeStep();
    return query.getColumn(0).getString();
}

void copyRows(SQLite::Database& database, const std::string& table) {
    const auto columns = columnsOf(database, table);
    database.exec("INSERT INTO kept." + table + " (" + columns + ") SELECT " + columns +
                  " FROM main." + table + " ORDER BY rowid");
}

} // namespace

StoreConnection::StoreConnection(const std::filesystem::path& file,
                                 std::chrono::milliseconds patience) {
    makePrivate(file);
    database_ = open(file.native(), patience);
}

StoreConnection::StoreConnection(InMemory) : database_(open(kInMemory, kPatience)) {}

std::shared_ptr<StoreConnection> StoreConnection::waitingFor(const std::filesystem::path& file,
                                                             std::chrono::milliseconds interval,
                                                             const std::string& failure) {
    AppLog::append("Store not opened, kept in memory until it can be: " + failure);
    const auto connection = std::make_shared<StoreConnection>(InMemory());
    connection->awaited_ = file;
    std::thread(keepTrying, std::weak_ptr(connection), interval).detach();
    return connection;
}

StoreConnection::~StoreConnection() {
    if (!awaited_.empty() && !moveToFile(kPatience))
        AppLog::append("Store not opened to the end; what was kept in memory is lost.");
}

std::filesystem::path StoreConnection::file() const {
    const std::lock_guard guard(lock_);
    const auto& name = database_->getFilename();
    return name == kInMemory ? std::filesystem::path() : std::filesystem::path(name);
}

std::int64_t StoreConnection::nextOutboxID() {
    return awaited_.empty() ? 0 : ++lastOutboxID_;
}

std::int64_t StoreConnection::currentOutboxID(std::int64_t id) const {
    const auto moved = movedOutboxIDs_.find(id);
    return moved == movedOutboxIDs_.end() ? id : moved->second;
}

void StoreConnection::keepTrying(std::weak_ptr<StoreConnection> waiting,
                                 std::chrono::milliseconds interval) {
    for (;;) {
        std::this_thread::sleep_for(interval);
        const auto connection = waiting.lock();
        if (!connection || connection->moveToFile(interval))
            return;
    }
}

bool StoreConnection::moveToFile(std::chrono::milliseconds patience) {
    try {
        makePrivate(awaited_);
        auto onDisk = open(awaited_.native(), patience);
        const std::lock_guard guard(lock_);
        moveRows(awaited_);
        database_ = std::move(onDisk);
        AppLog::append("Store opened: " + std::exchange(awaited_, {}).native());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void StoreConnection::moveRows(const std::filesystem::path& file) {
    auto& database = *database_;
    SQLite::Statement attach(database, "ATTACH ? AS kept");
    attach.bind(1, file.native());
    attach.exec();
    std::map<std::int64_t, std::int64_t> moved;
    try {
        SQLite::Transaction transaction(database);
        for (const auto* table :
             {"sessions", "files", "activity_events", "session_traces", "session_checks"})
            copyRows(database, table);
        const auto columns = columnsOf(database, "outbox");
        SQLite::Statement rows(database, "SELECT id FROM main.outbox ORDER BY id");
        SQLite::Statement insert(database, "INSERT INTO kept.outbox (" + columns + ") SELECT " +
                                               columns + " FROM main.outbox WHERE id = ?");
        while (rows.executeStep()) {
            const auto id = rows.getColumn(0).getInt64();
            insert.bind(1, id);
            insert.exec();
            insert.reset();
            moved[id] = database.getLastInsertRowid();
        }
        transaction.commit();
    } catch (...) {
        database.exec("DETACH kept");
        throw;
    }
    movedOutboxIDs_ = std::move(moved);
}

} // namespace slatewise
