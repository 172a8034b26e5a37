#pragma once

#include "Offload/SHA256Hasher.h"
#include "Offload/Transfer.h"
#include "Platform/Mailbox.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace slatewise {

/// Reads small copies back a few ahead of their turn, on threads of its own: a disk answers several
/// readers sooner than one after the other, and hashes are computed on several cores.
///
/// What is told is as if each were read in its turn, failures included. Begun and taken on one
/// thread, which waits in the end for the files that are being read.
class ReadBackAhead {
public:
    /// A larger file keeps a disk busy alone.
    static constexpr std::int64_t largestBytes = Transfer::chunkBytes;
    /// How many are worth to be under way: so many that no reader waits for the one who takes.
    static constexpr std::size_t mostAhead = 8;

    /// Null when the system has no thread to spare. `stop` is looked at before each file.
    static std::unique_ptr<ReadBackAhead> start(std::stop_token stop);

    ~ReadBackAhead();
    ReadBackAhead(const ReadBackAhead&) = delete;
    ReadBackAhead& operator=(const ReadBackAhead&) = delete;

    /// Has that copy read when those begun before it are.
    void begin(FileBeneath copy, std::vector<HashFormat> furtherFormats);

    /// What `Verifier::readDestination` gives of that copy; fails as it does. Waits for it, and
    /// tells `watch` once it is read. Empty when it is not the first that was begun and not taken.
    std::optional<Verifier::ReadBack> take(const FileBeneath& copy, const TransferWatch& watch);

private:
    static constexpr std::size_t kReaders = 3;

    explicit ReadBackAhead(std::stop_token stop);

    struct Read {
        Verifier::ReadBack copy;
        /// Byte counts of its chunks.
        std::vector<std::size_t> chunks;
        FileAccess access = FileAccess::Direct;
    };
    using Job = std::packaged_task<Read(Transfer&)>;
    struct Begun {
        std::filesystem::path relative;
        std::future<Read> read;
    };

    std::stop_token stop_;
    Mailbox<Job> jobs_;
    std::deque<Begun> begun_;
    std::array<std::jthread, kReaders> readers_;
};

} // namespace slatewise
