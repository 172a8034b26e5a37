#pragma once

#include "Offload/OffloadRows.h"
#include "Offload/RunTransfer.h"
#include "Offload/SHA256Hasher.h"

#include <cstddef>
#include <deque>
#include <exception>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace slatewise {

/// Reads the copies of a run back, one after the other, as far as anybody can tell: of small ones
/// that follow each other a few are read ahead, on threads of its own. A disk answers several
/// readers sooner than one that asks, hashes and asks again.
///
/// Where the system is short of threads, memory or descriptors, all are read in their turn. On the
/// run's thread; its end waits for the files that are being read.
class ReadBackAhead {
public:
    /// Those among `rows` that `order` gives the places of are copies below `folder`. All of it
    /// must outlive this, and `order` and the copies' names and sizes stay as they are.
    ReadBackAhead(RunTransfer& transfer, const RootFolder& folder,
                  std::span<const FileCopyResult> rows, std::span<const std::size_t> order);
    ~ReadBackAhead();
    ReadBackAhead(const ReadBackAhead&) = delete;
    ReadBackAhead& operator=(const ReadBackAhead&) = delete;

    /// What `Verifier::readDestination` gives of the copy at `position` in the order; fails as it
    /// does. Each is asked for once, from 0 on.
    Verifier::ReadBack read(std::size_t position, const TransferWatch& watch);

private:
    class Readers;
    struct Read {
        /// Unless it failed.
        Verifier::ReadBack copy;
        std::exception_ptr failure;
        /// Byte counts of its chunks.
        std::vector<std::size_t> chunks;
        FileAccess access = FileAccess::Direct;
    };
    struct Begun {
        std::size_t position;
        std::future<Read> read;
    };

    FileBeneath copyAt(std::size_t position) const;
    bool isSmall(std::size_t position) const;
    void beginAhead(std::size_t position);
    void begin(std::size_t position);
    std::optional<Read> takeIfBegun(std::size_t position);
    void giveUp();

    RunTransfer& transfer_;
    const RootFolder& folder_;
    const std::span<const FileCopyResult> rows_;
    const std::span<const std::size_t> order_;
    /// Null until there is something to read ahead.
    std::unique_ptr<Readers> readers_;
    bool hasGivenUp_ = false;
    std::deque<Begun> begun_;
    /// The first that was not begun.
    std::size_t next_ = 0;
};

} // namespace slatewise
