#include "Storage/StoreConnection.h"

#include "Platform/Clock.h"
#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Storage/AppLog.h"
#include "Storage/Migrations.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <utility>

namespace slatewise {

namespace {

/// SQLite's name for a file that is none.
constexpr auto* kInMemory = ":memory:";

/// The files beside it take over its rights. One that is there is never opened for that: whoever
/// closes a file gives up all locks that the process has on it, those of another connection too.
void makePrivate(const std::filesystem::path& file) {
    constexpr mode_t kOwnersAlone = 0600;
    constexpr auto kOthers = std::filesystem::perms::group_all | std::filesystem::perms::others_all;
    const FileDescriptor made(
        ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnersAlone));
    std::error_code ignored;
    const auto rights = std::filesystem::status(file, ignored).permissions();
    if (!ignored && (rights & kOthers) != std::filesystem::perms::none)
        std::filesystem::permissions(file, kOthers, std::filesystem::perm_options::remove, ignored);
}

std::unique_ptr<SQLite::Database> connect(const std::string& name,
                                          std::chrono::milliseconds patience) {
    return std::make_unique<SQLite::Database>(name, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE,
                                              static_cast<int>(patience.count()));
}

/// A file that could not be opened for writing, for whatever moment, is opened for reading.
bool isReadOnlyByMistake(SQLite::Database& database) {
    return sqlite3_db_readonly(database.getHandle(), "main") == 1 &&
           ::access(database.getFilename().c_str(), W_OK) == 0;
}

std::unique_ptr<SQLite::Database> open(const std::string& name,
                                       std::chrono::milliseconds patience) {
    auto database = connect(name, patience);
    if (isReadOnlyByMistake(*database))
        database = connect(name, patience);
    database->exec("PRAGMA foreign_keys = ON");
    Migrations::apply(*database);
    // Nobody waits for the program to begin any more.
    database->setBusyTimeout(static_cast<int>(StoreConnection::kPatience.count()));
    return database;
}

/// Whether time will not help: the file is none of ours, or not whole.
bool isDamage(const SQLite::Exception& failure) {
    switch (failure.getErrorCode()) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
        return true;
    default:
        return false;
    }
}

/// Renames the file, and what belongs to it, and gives its new name. Nothing is deleted.
std::filesystem::path putAside(const std::filesystem::path& file) {
    const auto name = ".damaged-" + Clock::localText(Clock::now(), "yyyy-MM-dd-HHmmss");
    auto aside = file;
    aside += name;
    for (int number = 2; FileSystem::exists(aside); ++number) {
        aside = file;
        aside += name + "-" + std::to_string(number);
    }
    // A journal that stayed behind would be played back into the new one.
    for (const std::string suffix : {"-journal", "-wal", "-shm", ""}) {
        const auto from = file.native() + suffix;
        if (FileSystem::exists(from))
            std::filesystem::rename(from, aside.native() + suffix);
    }
    return aside;
}

/// Whether another file is in its place, or none.
bool isPutAside(SQLite::Database& database) {
    int hasMoved = 0;
    (void)sqlite3_file_control(database.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    // It says so as well where nobody could look.
    struct stat there {};
    return hasMoved != 0 &&
           (::stat(database.getFilename().c_str(), &there) == 0 || errno == ENOENT);
}

/// The file that is waited for, from a move that failed: every transaction would begin there, too.
bool isKeptAttached(SQLite::Database& database) {
    return sqlite3_db_readonly(database.getHandle(), "kept") != -1;
}

/// The columns of a table but those that number its rows.
std::string columnsOf(SQLite::Database& database, const std::string& table) {
    SQLite::Statement query(database, "SELECT group_concat(name) FROM pragma_table_info(?) "
                                      "WHERE NOT (pk = 1 AND type = 'INTEGER')");
    query.bind(1, table);
    query.executeStep();
    return query.getColumn(0).getString();
}

/// Nothing may fail any more.
void logAfterCommit(const std::exception& failure) noexcept {
    try {
        AppLog::append("Store written, but: " + describe(failure));
    } catch (const std::exception&) {
        // There is no memory for a line of the log.
    }
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

std::shared_ptr<StoreConnection> StoreConnection::openOrWait(const std::filesystem::path& file,
                                                             std::chrono::milliseconds patience,
                                                             std::chrono::milliseconds interval) {
    const auto open = [&] {
        return std::make_shared<StoreConnection>(file, patience);
    };
    std::filesystem::path aside;
    try {
        try {
            return open();
        } catch (const SQLite::Exception& failure) {
            if (!isDamage(failure))
                throw;
            AppLog::append("Store damaged: " + describe(failure));
        }
        // A disk may have answered wrongly once, another program may have put the file aside.
        try {
            return open();
        } catch (const SQLite::Exception& failure) {
            if (!isDamage(failure))
                throw;
        }
        aside = putAside(file);
        AppLog::append("Store set aside: " + aside.native());
        auto connection = open();
        connection->setAside_ = aside;
        return connection;
    } catch (const std::exception& failure) {
        return waitingFor(file, interval, describe(failure), aside);
    }
}

std::shared_ptr<StoreConnection>
StoreConnection::waitingFor(const std::filesystem::path& file, std::chrono::milliseconds interval,
                            const std::string& failure, const std::filesystem::path& setAside) {
    AppLog::append("Store not opened, kept in memory until it can be: " + failure);
    auto connection = std::make_shared<StoreConnection>(InMemory());
    // A check may be of a session that only the file holds.
    connection->database_->exec("PRAGMA foreign_keys = OFF");
    connection->awaited_ = file;
    connection->setAside_ = setAside;
    std::thread(keepTrying, std::weak_ptr(connection), interval).detach();
    return connection;
}

std::shared_ptr<StoreConnection> StoreConnection::whileBusy(const std::string& failure) {
    constexpr std::chrono::seconds kInterval{5};
    const auto path = file();
    const std::lock_guard guard(moving_);
    if (!isKeeping())
        kept_ = waitingFor(path, kInterval, failure);
    return kept_;
}

std::shared_ptr<StoreConnection> StoreConnection::kept() {
    const std::lock_guard guard(moving_);
    return isKeeping() ? kept_ : nullptr;
}

bool StoreConnection::isKeeping() const {
    // One that has what it waited for would only meet the same obstacle.
    return kept_ && kept_->file().empty();
}

std::optional<std::filesystem::path> StoreConnection::takeSetAside() {
    const std::lock_guard guard(lock_);
    const bool isNews = !setAside_.empty() && !std::exchange(isSetAsideTaken_, true);
    return isNews ? std::optional(setAside_) : std::nullopt;
}

std::filesystem::path StoreConnection::setAside() const {
    const std::lock_guard guard(lock_);
    return setAside_;
}

void StoreConnection::writeWhatIsKept(std::chrono::milliseconds patience) {
    moveToFile(patience);
    std::shared_ptr<StoreConnection> kept;
    {
        const std::lock_guard guard(moving_);
        kept = kept_;
    }
    if (kept)
        kept->writeWhatIsKept(patience);
}

std::filesystem::path StoreConnection::file() const {
    const std::lock_guard guard(lock_);
    const auto& name = database_->getFilename();
    return name == kInMemory ? std::filesystem::path() : std::filesystem::path(name);
}

std::filesystem::path StoreConnection::awaited() const {
    const std::lock_guard guard(lock_);
    return awaited_;
}

void StoreConnection::makeReady() {
    if (isPutAside(*database_))
        throw SQLite::Exception("another program has put its file aside", SQLITE_CANTOPEN);
    if (sqlite3_get_autocommit(database_->getHandle()) == 0)
        database_->exec("ROLLBACK");
    if (isKeptAttached(*database_))
        database_->exec("DETACH kept");
}

void StoreConnection::commit(SQLite::Transaction& transaction) {
    try {
        transaction.commit();
    } catch (const SQLite::Exception& failure) {
        switch (failure.getExtendedErrorCode()) {
        // Locks are given back last.
        case SQLITE_IOERR_UNLOCK:
        case SQLITE_IOERR_RDLOCK:
        // What would undo it all is gone, whoever deleted it.
        case SQLITE_IOERR_DELETE_NOENT:
            return logAfterCommit(failure);
        default:
            throw;
        }
    }
}

void StoreConnection::settle(const std::string& file) noexcept {
    if (file == kInMemory)
        return;
    try {
        FileSystem::syncFolder(std::filesystem::path(file).parent_path());
    } catch (const std::exception& failure) {
        logAfterCommit(failure);
    }
}

std::int64_t StoreConnection::nextOutboxID() {
    return awaited_.empty() ? 0 : ++lastOutboxID_;
}

std::int64_t StoreConnection::currentOutboxID(std::int64_t id) const {
    const auto moved = movedOutboxIDs_.find(id);
    return moved == movedOutboxIDs_.end() ? id : moved->second;
}

void StoreConnection::keepTrying(const std::weak_ptr<StoreConnection>& waiting,
                                 std::chrono::milliseconds interval) {
    for (;;) {
        std::this_thread::sleep_for(interval);
        const auto connection = waiting.lock();
        if (!connection)
            return;
        try {
            return connection->moveToFile(interval);
        } catch (const std::exception&) {
            // Nor can it be had now.
        }
    }
}

void StoreConnection::moveToFile(std::chrono::milliseconds patience) {
    const std::lock_guard oneMover(moving_);
    if (awaited_.empty())
        return;
    makePrivate(awaited_);
    auto onDisk = open(awaited_.native(), patience);
    const std::lock_guard guard(lock_);
    moveRows(awaited_);
    database_ = std::move(onDisk);
    AppLog::append("Store opened: " + std::exchange(awaited_, {}).native());
}

void StoreConnection::moveRows(const std::filesystem::path& file) {
    auto& database = *database_;
    makeReady();
    SQLite::Statement attach(database, "ATTACH ? AS kept");
    attach.bind(1, file.native());
    attach.exec();
    std::map<std::int64_t, std::int64_t> moved;
    try {
        SQLite::Transaction transaction(database);
        for (const auto* table :
             {"sessions", "files", "activity_events", "session_traces", "session_checks"})
            copyRows(database, table);
        // Their sessions may have gone with a file that was set aside.
        database.exec("DELETE FROM kept.session_checks WHERE sessionID NOT IN "
                      "(SELECT id FROM kept.sessions)");
        const auto columns = columnsOf(database, "outbox");
        SQLite::Statement rows(database, "SELECT id FROM main.outbox ORDER BY id");
        SQLite::Statement insert(database, "INSERT INTO kept.outbox (" + columns + ") SELECT " +
                                               columns + " FROM main.outbox WHERE id = ?");
        SQLite::Statement pieces(database, "INSERT INTO kept.outbox_pieces (outboxID, text) SELECT "
                                           "?, text FROM main.outbox_pieces WHERE outboxID = ? "
                                           "ORDER BY id");
        while (rows.executeStep()) {
            const auto id = rows.getColumn(0).getInt64();
            insert.bind(1, id);
            insert.exec();
            insert.reset();
            moved[id] = database.getLastInsertRowid();
            pieces.bind(1, moved[id]);
            pieces.bind(2, id);
            pieces.exec();
            pieces.reset();
        }
        commit(transaction);
    } catch (...) {
        database.exec("DETACH kept");
        throw;
    }
    settle(file.native());
    movedOutboxIDs_ = std::move(moved);
}

} // namespace slatewise
