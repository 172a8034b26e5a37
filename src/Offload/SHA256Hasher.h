#pragma once

#include "Offload/Transfer.h"
#include "Platform/Files/UncachedFile.h"
#include "Platform/HashValue.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// What someone wants of a file's transfer, and to know of it while it goes on. Callbacks are
/// called on the caller's thread and may be empty.
struct TransferWatch {
    /// With the byte count of each chunk, once it is read and, in a copy, written.
    std::function<void(std::size_t)> onBytes;
    /// With the attributes of the source as it is when it is opened.
    std::function<void(const FileSystem::Attributes&)> onOpened{};
    /// Once per file read or written, at its end, with the way its bytes went.
    std::function<void(const FileBeneath&, FileAccess)> onAccess;
    /// Looked at before the first chunk and between chunks.
    std::stop_token stop;
    /// To be computed in the same pass, beside the SHA-256.
    std::vector<HashFormat> furtherFormats{};
};

/// The values of one pass over a file's bytes.
struct FileDigests {
    /// 64 lower-case hexadecimal digits.
    std::string sha256;
    /// In the order in which they were wanted.
    HashValues further;
};

/// The byte mover: reads a file past the system's cache, hashes it as it goes, and either throws
/// the bytes away or writes them to a new file. Synchronous and without state; fails with
/// `PosixError`, `OffloadError` or, when asked to stop, `CancellationError`.
namespace SHA256Hasher {

struct CopyResult {
    std::int64_t bytes = 0;
    /// Of what was read from the source.
    FileDigests digests;
};

FileDigests hashFile(Transfer& transfer, const FileBeneath& file, const TransferWatch& watch = {});

/// Copies a file to a new one in a folder that is there, with the source's modification date.
/// Nothing that bears that name is replaced.
///
/// The bytes are hashed before they are written, and are on the disk when this returns. A failed
/// copy leaves at `to` what was written until then.
///
/// `next` is what will be copied after it, if that is known: its reading begins while this copy is
/// on its way to the disk.
CopyResult copyAndHash(Transfer& transfer, const FileBeneath& from, const FileBeneath& to,
                       const TransferWatch& watch = {},
                       const std::optional<FileBeneath>& next = {});

} // namespace SHA256Hasher

/// Proves a copy.
namespace Verifier {

/// What was read of a copy.
struct ReadBack {
    FileDigests digests;
    /// Of the very file that was read, as it was before.
    FileSystem::Attributes attributes;
    /// Part of it stood in the system's memory, and may have been read there and not on the disk.
    bool mayComeFromMemory = false;
};

/// Reads what the destination disk holds.
ReadBack readDestination(Transfer& transfer, const FileBeneath& file,
                         const TransferWatch& watch = {});

/// Whether two digests are the same, in whatever case. An empty one never matches.
bool matches(std::string_view sourceHash, std::string_view destHash);

} // namespace Verifier

} // namespace slatewise
