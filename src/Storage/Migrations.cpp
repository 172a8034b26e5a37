#include "Storage/Migrations.h"

#include "Storage/AppLog.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <string>

namespace slatewise::Migrations {

namespace {

struct Migration {
    const char* identifier;
    const char* statements;
};

constexpr std::array<Migration, 7> kMigrations = {{
    {"v1", R"sql(
        CREATE TABLE sessions (
            id TEXT PRIMARY KEY,
            cardName TEXT NOT NULL,
            destName TEXT NOT NULL,
            sessionRoot TEXT NOT NULL,
            status TEXT NOT NULL,
            bytesCopied INTEGER NOT NULL DEFAULT 0,
            startedAt DATETIME NOT NULL,
            finishedAt DATETIME
        );
        CREATE TABLE files (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            sessionID TEXT NOT NULL REFERENCES sessions(id) ON DELETE CASCADE,
            relativePath TEXT NOT NULL,
            sizeBytes INTEGER NOT NULL,
            mtime DATETIME,
            created DATETIME,
            action TEXT NOT NULL,
            sourceSHA256 TEXT,
            destSHA256 TEXT,
            verifyStatus TEXT NOT NULL
        );
        CREATE INDEX index_files_on_sessionID ON files(sessionID);
        CREATE TABLE activity_events (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            sessionID TEXT,
            event TEXT NOT NULL,
            detail TEXT NOT NULL DEFAULT '',
            createdAt DATETIME NOT NULL
        );
        CREATE TABLE outbox (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            kind TEXT NOT NULL,
            payload TEXT NOT NULL,
            attempts INTEGER NOT NULL DEFAULT 0,
            lastError TEXT,
            createdAt DATETIME NOT NULL
        );
    )sql"},
    {"v2-camera-label", R"sql(
        ALTER TABLE sessions ADD COLUMN cameraLabel TEXT NOT NULL DEFAULT '';
    )sql"},
    {"v3-timecode", R"sql(
        ALTER TABLE files ADD COLUMN timecodeStart TEXT;
        ALTER TABLE files ADD COLUMN timecodeEnd TEXT;
        ALTER TABLE files ADD COLUMN durationTC TEXT;
        ALTER TABLE files ADD COLUMN durationSeconds DOUBLE;
        ALTER TABLE files ADD COLUMN captureFps DOUBLE;
        ALTER TABLE files ADD COLUMN timecodeRate DOUBLE;
        ALTER TABLE files ADD COLUMN timecodeDropFrame BOOLEAN;
    )sql"},
    {"v4-history", R"sql(
        CREATE TABLE session_traces (
            sessionID TEXT PRIMARY KEY REFERENCES sessions(id) ON DELETE CASCADE,
            ekip TEXT NOT NULL DEFAULT '',
            reportFolder TEXT NOT NULL DEFAULT ''
        );
        CREATE TABLE session_checks (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            sessionID TEXT NOT NULL REFERENCES sessions(id) ON DELETE CASCADE,
            checkedAt DATETIME NOT NULL,
            filesEqual INTEGER NOT NULL,
            differences INTEGER NOT NULL,
            failure TEXT NOT NULL DEFAULT ''
        );
        CREATE INDEX index_session_checks_on_sessionID ON session_checks(sessionID);
    )sql"},
    {"v5-card", R"sql(
        ALTER TABLE session_traces ADD COLUMN cardUUID TEXT NOT NULL DEFAULT '';
    )sql"},
    {"v6-outbox-pieces", R"sql(
        CREATE TABLE outbox_pieces (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            outboxID INTEGER NOT NULL REFERENCES outbox(id) ON DELETE CASCADE,
            text TEXT NOT NULL
        );
        CREATE INDEX index_outbox_pieces_on_outboxID ON outbox_pieces(outboxID);
    )sql"},
    {"v7-check-memory", R"sql(
        ALTER TABLE session_checks ADD COLUMN mayBeFromMemory BOOLEAN NOT NULL DEFAULT 0;
    )sql"},
}};

bool isApplied(SQLite::Database& database, const char* identifier) {
    SQLite::Statement query(database, "SELECT 1 FROM grdb_migrations WHERE identifier = ?");
    query.bind(1, identifier);
    return query.executeStep();
}

/// Files of sessions that the store does not hold are of no use to anybody, and must not keep the
/// others from being used.
void dropFilesWithoutSession(SQLite::Database& database) {
    const int dropped =
        database.exec("DELETE FROM files WHERE NOT EXISTS "
                      "(SELECT 1 FROM sessions WHERE sessions.id = files.sessionID)");
    if (dropped > 0)
        AppLog::append("Store: " + std::to_string(dropped) + " files without a session dropped");
}

void applyOne(SQLite::Database& database, const Migration& migration) {
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    // Another process may have been quicker while this one waited for the file.
    if (isApplied(database, migration.identifier))
        return;
    database.exec("PRAGMA defer_foreign_keys = ON");
    database.exec(migration.statements);
    SQLite::Statement note(database, "INSERT INTO grdb_migrations (identifier) VALUES (?)");
    note.bind(1, migration.identifier);
    note.exec();
    dropFilesWithoutSession(database);
    transaction.commit();
}

} // namespace

void apply(SQLite::Database& database) {
    database.exec(
        "CREATE TABLE IF NOT EXISTS grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY)");
    for (const auto& migration : kMigrations) {
        if (!isApplied(database, migration.identifier))
            applyOne(database, migration);
    }
}

} // namespace slatewise::Migrations
