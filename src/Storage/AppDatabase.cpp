#include "Storage/AppDatabase.h"

#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Storage/AppLog.h"
#include "Storage/OutboxPieces.h"
#include "Storage/StoreConnection.h"
#include "Storage/StoreFailure.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

namespace slatewise {

namespace {

/// What `outboxRecord` reads.
constexpr std::string_view kOutboxColumns = "id, kind, payload, attempts, lastError, createdAt";

/// Binds what a record holds by position, from 1 on, each type in the form the store keeps.
class Binder {
public:
    explicit Binder(SQLite::Statement& statement) : statement_(statement) {}

    Binder& operator<<(std::string_view text) {
        statement_.bind(++position_, Text::displayable(text));
        return *this;
    }
    Binder& operator<<(std::int64_t number) {
        statement_.bind(++position_, number);
        return *this;
    }
    Binder& operator<<(double number) {
        statement_.bind(++position_, number);
        return *this;
    }
    Binder& operator<<(bool flag) {
        statement_.bind(++position_, flag ? 1 : 0);
        return *this;
    }
    Binder& operator<<(Instant moment) {
        statement_.bind(++position_, Clock::databaseText(moment));
        return *this;
    }
    template <typename T>
    Binder& operator<<(const std::optional<T>& value) {
        if (value)
            return *this << *value;
        statement_.bind(++position_);
        return *this;
    }

private:
    SQLite::Statement& statement_;
    int position_ = 0;
};

std::optional<Instant> moment(const SQLite::Column& column) {
    if (column.isNull())
        return std::nullopt;
    return Clock::fromDatabaseText(column.getString());
}

OutboxRecord outboxRecord(SQLite::Database& database, SQLite::Statement& query) {
    OutboxRecord row;
    row.id = query.getColumn("id").getInt64();
    row.kind = query.getColumn("kind").getString();
    row.payload = query.getColumn("payload").getString();
    row.attempts = query.getColumn("attempts").getInt();
    if (const auto error = query.getColumn("lastError"); !error.isNull())
        row.lastError = error.getString();
    row.createdAt = moment(query.getColumn("createdAt")).value_or(Instant());
    row.payload += OutboxPieces::read(database, row.id);
    return row;
}

void insertSession(SQLite::Database& database, const OffloadOutcome& outcome,
                   const std::string& cardName, const std::string& destName,
                   const std::string& camera) {
    SQLite::Statement insert(
        database, "INSERT INTO sessions (id, cardName, destName, cameraLabel, sessionRoot, status, "
                  "bytesCopied, startedAt, finishedAt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    Binder(insert) << outcome.sessionID.text() << cardName << destName
                   << Text::pathSafeLabel(camera) << outcome.sessionRoot.native()
                   << rawValue(outcome.status) << outcome.bytesCopied << outcome.startedAt
                   << outcome.finishedAt;
    insert.exec();
}

void insertFiles(SQLite::Database& database, const std::string& sessionID,
                 std::span<const FileCopyResult> files) {
    SQLite::Statement insert(
        database, "INSERT INTO files (sessionID, relativePath, sizeBytes, mtime, created, action, "
                  "sourceSHA256, destSHA256, verifyStatus, timecodeStart, timecodeEnd, durationTC, "
                  "durationSeconds, captureFps, timecodeRate, timecodeDropFrame) "
                  "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const auto& file : files) {
        Binder(insert) << sessionID << file.relativePath << file.sizeBytes << file.mtime
                       << file.created << rawValue(file.action) << file.sourceSHA256
                       << file.destSHA256 << rawValue(file.verifyStatus)
                       << file.media->timecodeStart << file.media->timecodeEnd
                       << file.media->durationTC << file.media->durationSeconds
                       << file.media->captureFps << file.media->timecodeRate
                       << file.media->timecodeDropFrame;
        insert.exec();
        insert.reset();
    }
}

/// A word of an older or newer version is no good end.
OutcomeStatus status(const SQLite::Column& column) {
    return fromRawValue<OutcomeStatus>(column.getString()).value_or(OutcomeStatus::Failed);
}

SessionRecord sessionRecord(SQLite::Statement& query) {
    return {.id = query.getColumn("id").getString(),
            .cardName = query.getColumn("cardName").getString(),
            .destName = query.getColumn("destName").getString(),
            .cameraLabel = query.getColumn("cameraLabel").getString(),
            .sessionRoot = query.getColumn("sessionRoot").getString(),
            .status = status(query.getColumn("status")),
            .bytesCopied = query.getColumn("bytesCopied").getInt64(),
            .startedAt = moment(query.getColumn("startedAt")).value_or(Instant()),
            .finishedAt = moment(query.getColumn("finishedAt"))};
}

void insertActivity(SQLite::Database& database, const std::optional<std::string>& sessionID,
                    const std::string& event, const std::string& detail) {
    SQLite::Statement insert(database, "INSERT INTO activity_events (sessionID, event, detail, "
                                       "createdAt) VALUES (?, ?, ?, ?)");
    Binder(insert) << sessionID << event << detail << Clock::now();
    insert.exec();
}

void insertReport(StoreConnection& connection, SQLite::Database& database,
                  const QueuedReport& report) {
    // An id of 0 is the next one.
    SQLite::Statement insert(database, "INSERT INTO outbox (id, kind, payload, attempts, "
                                       "createdAt) VALUES (nullif(?, 0), ?, '', 0, ?)");
    Binder(insert) << connection.nextOutboxID() << report.kind << Clock::now();
    insert.exec();
    OutboxPieces::writePayload(database, database.getLastInsertRowid(), report.payload);
}

} // namespace

AppDatabase::AppDatabase(const std::filesystem::path& file)
    : AppDatabase(std::make_shared<StoreConnection>(file)) {}

AppDatabase::AppDatabase(std::shared_ptr<StoreConnection> connection)
    : connection_(std::move(connection)) {}

AppDatabase AppDatabase::inMemory() {
    return AppDatabase(std::make_shared<StoreConnection>(StoreConnection::InMemory()));
}

AppDatabase AppDatabase::openOrWait(const std::filesystem::path& file, Waiting waiting) {
    return AppDatabase(StoreConnection::openOrWait(file, waiting.patience, waiting.interval));
}

void AppDatabase::writeOrKeep(
    const std::function<void(StoreConnection&, SQLite::Database&)>& work) {
    const auto writeTo = [&](StoreConnection& connection) {
        connection.write([&](SQLite::Database& database) { work(connection, database); });
    };
    try {
        // Whoever holds the file was waited for once. It may be had again by the next line.
        const auto kept = connection_->kept();
        writeTo(kept ? *kept : *connection_);
    } catch (const SQLite::Exception& failure) {
        if (failure.getErrorCode() != SQLITE_BUSY)
            throw;
        writeTo(*connection_->whileBusy(describe(failure)));
    }
}

std::optional<std::filesystem::path> AppDatabase::takeSetAside() {
    return connection_->takeSetAside();
}

std::filesystem::path AppDatabase::setAside() const {
    return connection_->setAside();
}

std::optional<std::string> AppDatabase::writeWhatIsKept(L10n l10n,
                                                        std::chrono::milliseconds patience) {
    try {
        connection_->writeWhatIsKept(patience);
        return std::nullopt;
    } catch (const std::exception& failure) {
        AppLog::append("Store not opened to the end; what was kept in memory is lost: " +
                       describe(failure));
        return StoreFailure::reasonOf(failure, l10n);
    }
}

std::filesystem::path AppDatabase::file() const {
    return connection_->file();
}

std::filesystem::path AppDatabase::awaited() const {
    const auto kept = connection_->kept();
    return kept ? kept->awaited() : connection_->awaited();
}

void AppDatabase::save(const OffloadOutcome& outcome, std::span<const FileCopyResult> files,
                       const std::string& cardName, const std::string& destName,
                       const std::string& camera, const SessionFacts& facts,
                       const QueuedReport* report) {
    const auto sessionID = outcome.sessionID.text();
    const std::string event =
        outcome.status == OutcomeStatus::Verified ? "offload_verified" : "offload_failed";
    const auto detail =
        std::to_string(files.size()) + " dosya, " + std::to_string(outcome.bytesCopied) + " byte";
    writeOrKeep([&](StoreConnection& connection, SQLite::Database& database) {
        insertSession(database, outcome, cardName, destName, camera);
        insertFiles(database, sessionID, files);
        insertActivity(database, sessionID, event, detail);
        SQLite::Statement insert(database, "INSERT INTO session_traces (sessionID, ekip, "
                                           "reportFolder, cardUUID) VALUES (?, ?, ?, ?)");
        Binder(insert) << sessionID << facts.ekip << facts.reportFolder << facts.cardUUID;
        insert.exec();
        if (report)
            insertReport(connection, database, *report);
    });
}

std::vector<CardSession> AppDatabase::verifiedSessions(const std::string& cardUUID,
                                                       std::int64_t bytes) const {
    return connection_->read([&](SQLite::Database& database) {
        SQLite::Statement query(
            database,
            "SELECT s.id, cardName, destName, cameraLabel, sessionRoot, status, bytesCopied, "
            "startedAt, finishedAt, ifnull(cardUUID, '') AS cardUUID FROM sessions s LEFT JOIN "
            "session_traces t ON t.sessionID = s.id WHERE status = ?1 AND "
            "((?2 <> '' AND cardUUID = ?2) OR bytesCopied = ?3) AND NOT EXISTS (SELECT 1 FROM "
            "session_checks c WHERE c.id = (SELECT max(id) FROM session_checks WHERE sessionID = "
            "s.id AND failure = '') AND c.differences > 0) ORDER BY startedAt DESC");
        Binder(query) << rawValue(OutcomeStatus::Verified) << cardUUID << bytes;
        std::vector<CardSession> rows;
        while (query.executeStep())
            rows.push_back({sessionRecord(query), query.getColumn("cardUUID").getString()});
        return rows;
    });
}

std::vector<StoredFile> AppDatabase::filesOf(const std::string& sessionID) const {
    return connection_->read([&](SQLite::Database& database) {
        SQLite::Statement query(database, "SELECT relativePath, sizeBytes, ifnull(mtime, '') FROM "
                                          "files WHERE sessionID = ? AND action <> ?");
        Binder(query) << sessionID << rawValue(RowAction::Skip);
        std::vector<StoredFile> rows;
        while (query.executeStep())
            rows.push_back({query.getColumn(0).getString(), query.getColumn(1).getInt64(),
                            query.getColumn(2).getString()});
        return rows;
    });
}

void AppDatabase::recordCheck(const std::string& sessionID, const CheckRecord& check) {
    writeOrKeep([&](StoreConnection&, SQLite::Database& database) {
        SQLite::Statement insert(database,
                                 "INSERT INTO session_checks (sessionID, checkedAt, filesEqual, "
                                 "differences, failure, mayBeFromMemory) "
                                 "VALUES (?, ?, ?, ?, ?, ?)");
        Binder(insert) << sessionID << check.checkedAt << std::int64_t{check.filesEqual}
                       << std::int64_t{check.differences} << check.failure << check.mayBeFromMemory;
        insert.exec();
    });
}

void AppDatabase::recordActivity(const std::optional<std::string>& sessionID,
                                 const std::string& event, const std::string& detail) {
    writeOrKeep([&](StoreConnection&, SQLite::Database& database) {
        insertActivity(database, sessionID, event, detail);
    });
}

void AppDatabase::enqueueOutbox(const QueuedReport& report) {
    writeOrKeep([&](StoreConnection& connection, SQLite::Database& database) {
        insertReport(connection, database, report);
    });
}

void AppDatabase::enqueueOutbox(const std::string& kind, const std::string& payload) {
    enqueueOutbox({kind, [&](const FileSystem::TextSink& put) {
                       put(payload);
                   }});
}

std::vector<OutboxRecord> AppDatabase::pendingOutbox() const {
    return connection_->read([](SQLite::Database& database) {
        SQLite::Statement query(database, "SELECT " + std::string(kOutboxColumns) +
                                              " FROM outbox ORDER BY id ASC");
        std::vector<OutboxRecord> rows;
        while (query.executeStep())
            rows.push_back(outboxRecord(database, query));
        return rows;
    });
}

std::vector<std::int64_t> AppDatabase::pendingOutboxIDs() const {
    return connection_->read([](SQLite::Database& database) {
        SQLite::Statement query(database, "SELECT id FROM outbox ORDER BY id ASC");
        std::vector<std::int64_t> ids;
        while (query.executeStep())
            ids.push_back(query.getColumn(0).getInt64());
        return ids;
    });
}

std::optional<OutboxRecord> AppDatabase::outboxRow(std::int64_t id) const {
    return connection_->read([&](SQLite::Database& database) {
        SQLite::Statement query(database, "SELECT " + std::string(kOutboxColumns) +
                                              " FROM outbox WHERE id = ?");
        query.bind(1, connection_->currentOutboxID(id));
        return query.executeStep() ? std::optional(outboxRecord(database, query)) : std::nullopt;
    });
}

void AppDatabase::bumpOutbox(std::int64_t id, const std::string& error) {
    connection_->write([&](SQLite::Database& database) {
        SQLite::Statement update(
            database, "UPDATE outbox SET attempts = attempts + 1, lastError = ? WHERE id = ?");
        Binder(update) << error << connection_->currentOutboxID(id);
        update.exec();
    });
}

void AppDatabase::deleteOutbox(std::int64_t id) {
    connection_->write([&](SQLite::Database& database) {
        for (const auto* words :
             {"DELETE FROM outbox_pieces WHERE outboxID = ?", "DELETE FROM outbox WHERE id = ?"}) {
            SQLite::Statement remove(database, words);
            Binder(remove) << connection_->currentOutboxID(id);
            remove.exec();
        }
    });
}

std::vector<HistoryRecord> AppDatabase::history() const {
    return connection_->read([&](SQLite::Database& database) {
        SQLite::Statement query(
            database,
            "SELECT s.id, cardName, destName, cameraLabel, sessionRoot, status, bytesCopied, "
            "startedAt, finishedAt, ekip, reportFolder, checkedAt, filesEqual, differences, "
            "failure, mayBeFromMemory, (SELECT count(*) FROM files f WHERE f.sessionID = s.id AND "
            "f.action <> ?) AS fileCount FROM sessions s LEFT JOIN session_traces t ON t.sessionID "
            "= s.id "
            "LEFT JOIN session_checks c ON c.id = (SELECT max(id) FROM session_checks WHERE "
            "sessionID = s.id) ORDER BY startedAt DESC");
        Binder(query) << rawValue(RowAction::Skip);
        std::vector<HistoryRecord> rows;
        while (query.executeStep()) {
            rows.push_back({.session = sessionRecord(query),
                            .files = query.getColumn("fileCount").getInt(),
                            .ekip = query.getColumn("ekip").getString(),
                            .reportFolder = query.getColumn("reportFolder").getString(),
                            .lastCheck = {}});
            if (const auto checkedAt = moment(query.getColumn("checkedAt"))) {
                rows.back().lastCheck = {.checkedAt = *checkedAt,
                                         .filesEqual = query.getColumn("filesEqual").getInt(),
                                         .differences = query.getColumn("differences").getInt(),
                                         .failure = query.getColumn("failure").getString(),
                                         .mayBeFromMemory =
                                             query.getColumn("mayBeFromMemory").getInt() != 0};
            }
        }
        return rows;
    });
}

std::vector<SessionRecord> AppDatabase::recentSessions(int limit) const {
    return connection_->read([&](SQLite::Database& database) {
        SQLite::Statement query(database,
                                "SELECT id, cardName, destName, cameraLabel, sessionRoot, status, "
                                "bytesCopied, startedAt, finishedAt FROM sessions "
                                "ORDER BY startedAt DESC LIMIT ?");
        query.bind(1, limit);
        std::vector<SessionRecord> rows;
        while (query.executeStep()) {
            rows.push_back(sessionRecord(query));
        }
        return rows;
    });
}

} // namespace slatewise
