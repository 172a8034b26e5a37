#pragma once

#include "Offload/MediaMetadata.h"
#include "Offload/OffloadProblem.h"
#include "Platform/Boxed.h"
#include "Platform/Clock.h"
#include "Platform/HashValue.h"
#include "Platform/RawWords.h"
#include "Platform/Uuid.h"

#include <array>
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
    /// When its bytes and when anything about it changed last, to the nanosecond, as far as the
    /// file system keeps that.
    std::array<std::int64_t, 4> changes{};

    friend bool operator==(const InventoryEntry&, const InventoryEntry&) = default;
};

/// What was done with a file.
enum class RowAction { Copy, Hash, Skip, Fail };

constexpr std::array<std::string_view, 4> rawWords(RowAction) {
    return {"COPY", "HASH", "SKIP", "FAIL"};
}

/// What is known of a file's copy.
enum class VerifyStatus {
    /// Copied; the run stopped before it was read back.
    CopiedUnverified,
    /// Read back from the destination, hashes equal. The word a card is wiped on.
    Verified,
    /// Read back, hashes differ.
    Mismatch,
    /// Copy or read-back failed, or the run stopped before the file.
    Failed,
    /// Source read and hashed, nothing copied.
    Hashed,
    /// Not copied, on purpose.
    Skipped,
};

constexpr std::array<std::string_view, 6> rawWords(VerifyStatus) {
    return {"copied_unverified", "verified", "mismatch", "failed", "hashed", "skipped"};
}

/// How a run ended.
enum class OutcomeStatus {
    /// Every copied file was proved.
    Verified,
    /// The source was hashed; nothing was to be copied.
    Hashed,
    /// At least one file failed, or something about the run did.
    Failed,
};

constexpr std::array<std::string_view, 3> rawWords(OutcomeStatus) {
    return {"verified", "hashed", "failed"};
}

constexpr bool endedWell(OutcomeStatus status) {
    return status != OutcomeStatus::Failed;
}

/// Values of a file's bytes beyond its SHA-256, where a run is asked for them.
struct FurtherHashes {
    /// Of what was read from the card.
    HashValues source;
    /// Of what was read back, where that differs or could not be proved.
    HashValues readBack;
    /// When it was read back.
    std::optional<Instant> hashedAt;

    friend bool operator==(const FurtherHashes&, const FurtherHashes&) = default;
};

/// The row of one file of a run. Reports, database rows and what the service gets are all made of
/// it.
struct FileCopyResult {
    std::string relativePath;
    /// Bytes copied for a copied file; the inventory's size otherwise.
    std::int64_t sizeBytes = 0;
    std::optional<Instant> mtime;
    std::optional<Instant> created;
    RowAction action = RowAction::Fail;
    /// 64 lower-case hexadecimal digits of the bytes read from the source.
    std::optional<std::string> sourceSHA256;
    /// The same of the bytes read back from the destination.
    std::optional<std::string> destSHA256;
    VerifyStatus verifyStatus = VerifyStatus::Failed;
    Boxed<FurtherHashes> further;
    /// What the clip says of itself; most files of a card are none.
    Boxed<MediaMetadata> media;

    friend bool operator==(const FileCopyResult&, const FileCopyResult&) = default;
};

/// The row of a file as it stands in the inventory.
FileCopyResult makeRow(const InventoryEntry& entry, RowAction action, VerifyStatus verifyStatus);

/// Whatever was done with the file, it failed.
void markFailed(FileCopyResult& row, VerifyStatus verifyStatus);

/// The result of one run of one card to one destination.
struct OffloadOutcome {
    Uuid sessionID;
    /// The session's folder on the destination; only a name when nothing was copied.
    std::filesystem::path sessionRoot;
    OutcomeStatus status = OutcomeStatus::Failed;
    /// The card was to be read and hashed, and nothing to be copied.
    bool isHashOnly = false;
    /// What a person must know beyond the rows, in the order in which it came up.
    std::vector<OffloadProblem> problems;
    /// One row per file of the inventory.
    std::vector<FileCopyResult> files;
    /// The hash lists that were written beside the copy, below the session's folder.
    std::vector<std::string> hashLists{};
    /// Bytes that went through the copy loop.
    std::int64_t bytesCopied = 0;
    Instant startedAt{};
    Instant finishedAt{};

    friend bool operator==(const OffloadOutcome&, const OffloadOutcome&) = default;
};

} // namespace slatewise
