#pragma once

#include "Language/L10n.h"
#include "Offload/OffloadRows.h"
#include "Platform/Files/FileSystem.h"
#include "Storage/StoreRecords.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace SQLite {
class Database;
}

namespace slatewise {

class StoreConnection;

/// The local store: finished sessions with their files, an activity log, and the outbox. A record
/// of what happened; no offload depends on it.
///
/// One SQLite connection, used by one caller at a time: every operation waits for its turn, runs as
/// one transaction, and fails with an exception of the SQLite wrapper. Any thread. A copy shares
/// the connection, which closes with the last of them: work on another thread takes a copy along.
class AppDatabase {
public:
    /// Opens or creates the file and brings its tables up to date.
    explicit AppDatabase(const std::filesystem::path& file);
    /// How a file that cannot be had is waited for: at first, and between one try and the next.
    struct Waiting {
        std::chrono::milliseconds patience{500};
        std::chrono::milliseconds interval{5000};
    };

    /// The same, but never fails: while the file cannot be had, because another program holds it or
    /// its disk is not there, all is kept in memory and the file tried again, to the end of the
    /// process. What was kept is moved there when it can be. A file that is no store, or a damaged
    /// one, is set aside under another name, and a new one begun.
    static AppDatabase openOrWait(const std::filesystem::path& file, Waiting waiting);

    /// Where the file lies that was set aside, told once; else empty.
    std::optional<std::filesystem::path> takeSetAside();

    /// The same as often as one asks.
    std::filesystem::path setAside() const;

    /// Tries once more to write what is kept in memory because the file could not be had, and gives
    /// why it is lost otherwise, for a person. For the end of a process. Blocks for about as long
    /// as `patience`.
    std::optional<std::string>
    writeWhatIsKept(L10n l10n, std::chrono::milliseconds patience = std::chrono::seconds(5));

    /// A store that ends with the process.
    static AppDatabase inMemory();

    /// The file, empty while the store is in memory.
    std::filesystem::path file() const;

    /// The file that some of the store is to be in and is not yet; else empty.
    std::filesystem::path awaited() const;

    /// Whether both share one connection.
    bool isSame(const AppDatabase& other) const { return connection_ == other.connection_; }

    /// Stores the session, its files and an activity row, all or nothing. A session that is stored
    /// already is a failure. The outcome's rows are those of `files`, whoever holds them. While
    /// another program holds the file, it is kept as `openOrWait` says, and so is a report that is
    /// queued, a check and an activity. A report that is given is queued with it, or neither is
    /// kept.
    void save(const OffloadOutcome& outcome, std::span<const FileCopyResult> files,
              const std::string& cardName, const std::string& destName, const std::string& camera,
              const SessionFacts& facts = {}, const QueuedReport* report = nullptr);

    /// Verified sessions of a card with that file system, or of so many bytes; latest first. An
    /// empty UUID is none. Left out are those of which the last check that came to an end found
    /// differences.
    std::vector<CardSession> verifiedSessions(const std::string& cardUUID,
                                              std::int64_t bytes) const;

    /// The files of a session that were to be copied.
    std::vector<StoredFile> filesOf(const std::string& sessionID) const;

    /// Notes when a stored session's copy was read again, and what that showed.
    void recordCheck(const std::string& sessionID, const CheckRecord& check);

    /// All sessions, latest first, each with its latest check.
    std::vector<HistoryRecord> history() const;

    /// `sessionID` may be empty.
    void recordActivity(const std::optional<std::string>& sessionID, const std::string& event,
                        const std::string& detail);

    void enqueueOutbox(const QueuedReport& report);

    /// The same of a text that is at hand.
    void enqueueOutbox(const std::string& kind, const std::string& payload);

    /// Oldest first.
    std::vector<OutboxRecord> pendingOutbox() const;

    /// The ids alone, oldest first: the reports of a week without network need not all be in memory
    /// at once.
    std::vector<std::int64_t> pendingOutboxIDs() const;

    /// Empty when the row is gone.
    std::optional<OutboxRecord> outboxRow(std::int64_t id) const;

    /// Counts a failed delivery. A row that is gone is no failure; nor is it below.
    void bumpOutbox(std::int64_t id, const std::string& error);
    void deleteOutbox(std::int64_t id);

    /// The latest sessions, latest first.
    std::vector<SessionRecord> recentSessions(int limit) const;

private:
    explicit AppDatabase(std::shared_ptr<StoreConnection> connection);

    /// Has `work` write, to memory while another program holds the file.
    void writeOrKeep(const std::function<void(StoreConnection&, SQLite::Database&)>& work);

    std::shared_ptr<StoreConnection> connection_;
};

} // namespace slatewise
