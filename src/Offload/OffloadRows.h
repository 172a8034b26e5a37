#pragma once

#include "Offload/MediaMetadata.h"
#include "Platform/Clock.h"
#include "Platform/Uuid.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// One item of a source tree.
struct InventoryEntry {
    /// Under the walked root, "/" between its parts. Bytes as the file system has them.
    std::string relativePath;
    bool isDirectory = false;
    /// 0 for a folder, or when unknown.
    std::int64_t sizeBytes = 0;
    std::optional<Instant> mtime;
    std::optional<Instant> created;
    /// Only ever true for something that has bytes to copy and hits no skip rule.
    bool shouldCopy = false;

    friend bool operator==(const InventoryEntry&, const InventoryEntry&) = default;
};

/// What was done with a file. Compared case-sensitively, as stored in every report.
namespace RowAction {
inline constexpr std::string_view copy = "COPY";
inline constexpr std::string_view hash = "HASH";
inline constexpr std::string_view skip = "SKIP";
inline constexpr std::string_view fail = "FAIL";
} // namespace RowAction

/// What is known of a file's copy.
namespace VerifyStatus {
/// Copied; the run stopped before it was read back.
inline constexpr std::string_view copiedUnverified = "copied_unverified";
/// Read back from the destination, hashes equal. The word a card is wiped on.
inline constexpr std::string_view verified = "verified";
/// Read back, hashes differ.
inline constexpr std::string_view mismatch = "mismatch";
/// Copy or read-back failed, or the run stopped before the file.
inline constexpr std::string_view failed = "failed";
/// Source read and hashed, nothing copied.
inline constexpr std::string_view hashed = "hashed";
/// Not copied, on purpose.
inline constexpr std::string_view skipped = "skipped";
} // namespace VerifyStatus

/// How a run ended.
namespace OutcomeStatus {
/// Every copied file was proved.
inline constexpr std::string_view verified = "verified";
/// The source was hashed; nothing was to be copied.
inline constexpr std::string_view hashed = "hashed";
/// At least one file failed.
inline constexpr std::string_view failed = "failed";
} // namespace OutcomeStatus

/// The row of one file of a run. Reports, database rows and what the service gets are all made of
/// it. The media fields are those of `MediaMetadata`.
struct FileCopyResult {
    std::string relativePath;
    /// Bytes copied for a copied file; the inventory's size otherwise.
    std::int64_t sizeBytes = 0;
    std::optional<Instant> mtime;
    std::optional<Instant> created;
    /// One of `RowAction`.
    std::string action;
    /// 64 lower-case hexadecimal digits of the bytes read from the source.
    std::optional<std::string> sourceSHA256;
    /// The same of the bytes read back from the destination.
    std::optional<std::string> destSHA256;
    /// One of `VerifyStatus`.
    std::string verifyStatus;
    std::optional<std::string> timecodeStart, timecodeEnd, durationTC;
    std::optional<double> durationSeconds, captureFps, timecodeRate;
    std::optional<bool> timecodeDropFrame;
    std::optional<ClipEssence> essence;

    friend bool operator==(const FileCopyResult&, const FileCopyResult&) = default;
};

/// The result of one run of one card to one destination.
struct OffloadOutcome {
    Uuid sessionID;
    /// The session's folder on the destination; only a name when nothing was copied.
    std::filesystem::path sessionRoot;
    /// One of `OutcomeStatus`.
    std::string status;
    /// One row per file of the inventory.
    std::vector<FileCopyResult> files;
    /// Bytes that went through the copy loop.
    std::int64_t bytesCopied = 0;
    Instant startedAt{};
    Instant finishedAt{};

    friend bool operator==(const OffloadOutcome&, const OffloadOutcome&) = default;
};

} // namespace slatewise
