#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Clock.h"
#include "Platform/Files/FileSystem.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace slatewise {

/// One offload of one card to one destination.
struct SessionRecord {
    /// The session's UUID in lower case.
    std::string id;
    std::string cardName;
    std::string destName;
    std::string cameraLabel;
    std::string sessionRoot;
    OutcomeStatus status = OutcomeStatus::Failed;
    std::int64_t bytesCopied = 0;
    Instant startedAt{};
    std::optional<Instant> finishedAt;

    friend bool operator==(const SessionRecord&, const SessionRecord&) = default;
};

/// What a session is known by beyond its outcome; each may be empty.
struct SessionFacts {
    /// Who shot it.
    std::string ekip{};
    /// Where its reports are.
    std::string reportFolder{};
    /// Which file system the card had.
    std::string cardUUID{};
};

/// A report for the service, as it is put into the outbox.
struct QueuedReport {
    std::string kind;
    /// May be asked more than once; too long, perhaps, to be held whole.
    FileSystem::TextSource payload;
};

/// A session and the file system of its card; the latter is empty when nobody noted it.
struct CardSession {
    SessionRecord session;
    std::string cardUUID;
};

/// By which a file is known again. The date is in the store's form, empty when unknown.
struct StoredFile {
    std::string relativePath;
    std::int64_t sizeBytes = 0;
    std::string mtime;

    friend auto operator<=>(const StoredFile&, const StoredFile&) = default;
};

/// One time that a session's copy was read again.
struct CheckRecord {
    Instant checkedAt{};
    int filesEqual = 0;
    int differences = 0;
    /// Why it came to nothing; empty when it did not.
    std::string failure{};
    /// Nobody can rule out that what was read came from memory and not from the disk.
    bool mayBeFromMemory = false;

    bool isGood() const { return differences == 0 && failure.empty(); }
    friend bool operator==(const CheckRecord&, const CheckRecord&) = default;
};

/// A session with all that is known of it.
struct HistoryRecord {
    SessionRecord session;
    /// Those that were to be copied or hashed.
    int files = 0;
    /// Empty for sessions of older versions, as the next.
    std::string ekip;
    std::string reportFolder;
    std::optional<CheckRecord> lastCheck;

    friend bool operator==(const HistoryRecord&, const HistoryRecord&) = default;
};

/// One report that waits for the service.
struct OutboxRecord {
    std::int64_t id = 0;
    std::string kind;
    /// JSON text.
    std::string payload;
    /// Failed deliveries so far.
    int attempts = 0;
    std::optional<std::string> lastError;
    Instant createdAt{};

    friend bool operator==(const OutboxRecord&, const OutboxRecord&) = default;
};

} // namespace slatewise
