#pragma once

#include "Platform/Files/UncachedFile.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

namespace slatewise {

/// Carries files past whoever hashes them, chunk by chunk: a thread of its own reads a few chunks
/// ahead, and another one writes what was hashed, so that the slowest of the three sets the pace
/// and not their sum.
///
/// What happens and in which order is as if one thread did it all. A failure is told once
/// everything before it is written and told, so a chunk that cannot be written comes before a later
/// one that cannot be read; after a failure nothing more is written. Asked to stop, it begins no
/// further chunk: what was written is told, and nothing else is written.
///
/// A file of at most one chunk goes through the caller's thread alone, which is faster, unless its
/// reading was begun while a disk was busy with the file before. The two other threads begin when
/// they are needed first and last as long as the transfer; after a failure or a stop they are
/// ended, for which a read that hangs is waited for half a second, and begin anew with the next
/// file.
///
/// One file at a time, from one thread. Lives as long as a run.
class Transfer {
public:
    static constexpr std::size_t chunkBytes = 1'048'576;
    /// A smaller size asked for is raised to this.
    static constexpr std::size_t leastChunkBytes = 65'536;

    /// What is done with each chunk, on the caller's thread and in the file's order.
    struct Steps {
        /// Before it is written.
        std::function<void(std::span<const std::byte>)> hash;
        /// With its byte count, once it is hashed and, in a copy, written.
        std::function<void(std::size_t)> tell;
    };

    explicit Transfer(std::size_t size = chunkBytes);
    ~Transfer();

    /// Opens a file for reading, or takes what was prepared under that name. Fails with
    /// `PosixError` or `Error`.
    std::shared_ptr<UncachedFile> open(const FileBeneath& name);

    /// Opens the file that is copied next and has its first chunks read meanwhile: a disk takes
    /// long to sync a small file. Nothing of it is told before its turn comes, a failure included.
    void prepare(const FileBeneath& next);

    /// Reads a newly opened file to its end. Blocks; looks at `stop` before the first chunk and
    /// between chunks. Fails with `PosixError` or, when asked to stop, with `CancellationError`.
    ///
    /// Does not wait for a read that does not come back: the file is then read, and closed, when it
    /// does, which is why it is shared.
    void read(std::shared_ptr<UncachedFile> file, const Steps& steps, const std::stop_token& stop);

    /// As `read`, and writes each chunk to a new file. Waits for a write that was begun.
    void copy(std::shared_ptr<UncachedFile> from, UncachedFile& to, const Steps& steps,
              const std::stop_token& stop);

private:
    class Stages;
    struct Prepared {
        FileBeneath name;
        std::shared_ptr<UncachedFile> file;
    };

    Stages& stages();
    void carry(std::shared_ptr<UncachedFile> from, UncachedFile* to, const Steps& steps,
               const std::stop_token& stop);
    void carryWritingHere(UncachedFile& to, const Steps& steps, const std::stop_token& stop);
    void leavePrepared();
    void carryAlone(UncachedFile& from, UncachedFile* to, const Steps& steps,
                    const std::stop_token& stop);

    std::size_t size_;
    /// Of the caller's thread, for small files.
    TransferBuffer buffer_;
    /// Empty until there is something to do beside the caller, and after a file that was left in
    /// the middle.
    std::unique_ptr<Stages> stages_;
    /// Being read already.
    std::optional<Prepared> prepared_;
};

} // namespace slatewise
