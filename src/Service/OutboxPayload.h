#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Clock.h"
#include "Platform/Files/FileSystem.h"
#include "Reports/SessionManifest.h"
#include "Storage/StoreRecords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// One file of a reported session.
struct OutboxFile {
    /// On the card.
    std::string sourcePath;
    /// In the session's folder on the destination.
    std::string targetPath;
    std::int64_t fileSize = 0;
    RowAction action = RowAction::Fail;

    friend bool operator==(const OutboxFile&, const OutboxFile&) = default;
};

/// The report of one session, as it waits in the outbox.
struct OutboxPayload {
    /// UUID in lower case.
    std::string sessionID;
    /// The card's name.
    std::string driveName;
    std::int64_t totalSizeBytes = 0;
    Instant startedAt{};
    Instant finishedAt{};
    /// The outcome's; only "verified" is a success.
    OutcomeStatus status = OutcomeStatus::Failed;
    /// Megabytes of 1,000,000 bytes per second.
    double averageSpeedMBs = 0;
    /// In the outcome's order.
    std::vector<OutboxFile> files;
    /// The session manifest as JSON text, or "{}".
    std::string inventoryJSON;
    /// Absent for a verified session.
    std::optional<std::string> error;

    /// Reads JSON text with the field names as keys. Fails with `Error` when it is no such report.
    static OutboxPayload decode(std::string_view text);

    friend bool operator==(const OutboxPayload&, const OutboxPayload&) = default;
};

/// Passes on the report of a session that ended, whatever its end, as JSON text; dates to the
/// second. A session of very many files has no inventory in it.
void writePayload(const SessionManifest& manifest, const FileSystem::TextSink& put);

/// The report of a session as it waits for the service. The manifest must live until it is stored,
/// for it is asked only then; that fails with an exception of whoever makes the text, too.
QueuedReport queuedReport(const SessionManifest& manifest);

} // namespace slatewise
