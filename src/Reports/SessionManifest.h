#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// The card of a session.
struct ManifestVolume {
    std::string name;
    std::optional<std::string> volumeUUID;
    std::string deviceIdentifier;
    std::string fileSystem;
    std::string protocolName;
    std::int64_t totalBytes = 0;
    std::string mountPoint;
    /// Trimmed, "/" replaced by "-".
    std::string camera;
    /// Trimmed.
    std::string ekip;

    friend bool operator==(const ManifestVolume&, const ManifestVolume&) = default;
};

/// The destination of a session.
struct ManifestDestination {
    std::string name;
    std::optional<std::string> volumeUUID;
    std::string mountPoint;
    std::string sessionRoot;

    friend bool operator==(const ManifestDestination&, const ManifestDestination&) = default;
};

/// Totals. A file that was copied and not proved counts in none of the three file counts.
struct ManifestCounts {
    /// Folders that the files' paths imply.
    int folders = 0;
    int filesCopied = 0;
    /// Read and hashed where nothing was to be copied.
    int filesHashed = 0;
    int filesSkippedSystem = 0;
    int filesFailed = 0;
    std::int64_t bytesCopied = 0;

    friend bool operator==(const ManifestCounts&, const ManifestCounts&) = default;
};

/// One file of a session is its row, as the run gave it.
using ManifestFile = FileCopyResult;

/// The duration as timecode, a dash when there is none.
std::string displayDuration(const ManifestFile& file);

/// The record of one session, from which every report is made.
struct SessionManifest {
    int schemaVersion = 0;
    std::string app;
    std::string appVersion;
    std::string sessionID;
    Instant startedAt{};
    Instant finishedAt{};
    OutcomeStatus status = OutcomeStatus::Failed;
    /// As the outcome has it. Manifests of older versions do not say so.
    bool isHashOnly = false;
    /// Sentences about what no row has room for, in the language of the offload: what made the
    /// session fail, and what one should know of it anyway. One list in the file.
    std::vector<std::string> problems;
    std::vector<std::string> notes;
    /// The hash lists that were written beside the copy, below the session's folder.
    std::vector<std::string> hashLists;
    /// By which the run left things out, where these are others than by default.
    std::optional<std::vector<std::string>> skipNames{};
    std::string hashAlgorithm;
    ManifestVolume card;
    ManifestDestination destination;
    ManifestCounts counts;
    /// In the outcome's order.
    std::vector<ManifestFile> files;

    /// Nothing was to be copied, so there is no folder of the session.
    bool wasHashing() const;

    /// What was copied, or read and hashed where nothing was to be copied.
    std::int64_t bytesHandled() const;

    /// The facts that all files with facts share.
    ClipEssence cardEssence() const;

    friend bool operator==(const SessionManifest&, const SessionManifest&) = default;
};

} // namespace slatewise
