#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Clock.h"
#include "Reports/SessionManifest.h"
#include "Volumes/VolumeRecords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

class AppDatabase;

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

    /// JSON text with the field names as keys; dates to the second.
    std::string encoded() const;

    /// Reads what `encoded` gave. Fails with `Error` when it is no such report.
    static OutboxPayload decode(std::string_view text);

    friend bool operator==(const OutboxPayload&, const OutboxPayload&) = default;
};

/// The report of a session that ended, whatever its end.
OutboxPayload makePayload(const OffloadOutcome& outcome, const ClassifiedVolume& card,
                          const SessionManifest& manifest);

/// Stores the report of a session among those that wait for the service. Fails with an exception of
/// the store, or of whoever makes the text. Blocks; any thread.
void selfEnqueue(const OffloadOutcome& outcome, const ClassifiedVolume& card,
                 const ClassifiedVolume& destination, const SessionManifest& manifest,
                 AppDatabase& database);

} // namespace slatewise
