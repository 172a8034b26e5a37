#include "Offload/ReadBackAhead.h"

#include "Platform/Error.h"
#include "Platform/Mailbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <new>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>

namespace slatewise {

namespace {

constexpr std::size_t kReaders = 3;
/// So many are under way, the one at hand included, that no reader waits for whoever takes.
constexpr std::size_t kMostBegun = 8;

/// Whether one reader might have got what several did not.
bool isOurShortage(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const PosixError& ofSystem) {
        return ofSystem.code() == EMFILE || ofSystem.code() == ENFILE || ofSystem.code() == ENOMEM;
    } catch (const std::bad_alloc&) {
        return true;
    } catch (const std::system_error&) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

/// The threads. Their end waits for the files being read; what was not begun is not read.
class ReadBackAhead::Readers {
public:
    using Job = std::packaged_task<Read(Transfer&)>;

    /// Buffers are had here, where a failure can be told.
    Readers() {
        for (std::size_t index = 0; index < kReaders; ++index) {
            auto& transfer = transfers_[index];
            threads_[index] = std::jthread([this, &transfer](const std::stop_token& end) {
                while (auto job = jobs_.take(end)) {
                    if (end.stop_requested())
                        return;
                    (*job)(transfer);
                }
            });
        }
    }

    ~Readers() {
        for (auto& thread : threads_)
            thread.request_stop();
    }

    Readers(const Readers&) = delete;
    Readers& operator=(const Readers&) = delete;

    std::future<Read> put(Job job) {
        auto read = job.get_future();
        jobs_.put(std::move(job));
        return read;
    }

private:
    Mailbox<Job> jobs_;
    std::array<Transfer, kReaders> transfers_;
    std::array<std::jthread, kReaders> threads_;
};

ReadBackAhead::ReadBackAhead(RunTransfer& transfer, const RootFolder& folder,
                             std::span<const FileCopyResult> rows,
                             std::span<const std::size_t> order)
    : transfer_(transfer), folder_(folder), rows_(rows), order_(order) {}

ReadBackAhead::~ReadBackAhead() = default;

Verifier::ReadBack ReadBackAhead::read(std::size_t position, const TransferWatch& watch) {
    beginAhead(position);
    auto read = takeIfBegun(position);
    if (!read)
        return Verifier::readDestination(transfer_.transfer(), copyAt(position), watch);
    // Told, and stopped, as if it had been read only now.
    transfer_.throwIfCancelled();
    for (const auto chunk : read->chunks) {
        if (watch.onBytes)
            watch.onBytes(chunk);
        transfer_.throwIfCancelled();
    }
    if (read->failure)
        std::rethrow_exception(read->failure);
    if (watch.onAccess)
        watch.onAccess(copyAt(position), read->access);
    return std::move(read->copy);
}

FileBeneath ReadBackAhead::copyAt(std::size_t position) const {
    return {folder_, rows_[order_[position]].relativePath};
}

bool ReadBackAhead::isSmall(std::size_t position) const {
    return rows_[order_[position]].sizeBytes <= static_cast<std::int64_t>(Transfer::chunkBytes);
}

/// Nothing behind a larger file, which would be proved long before its turn then; and no single
/// file, which gains nothing.
void ReadBackAhead::beginAhead(std::size_t position) {
    next_ = std::max(next_, position);
    auto end = next_;
    while (end < std::min(order_.size(), position + kMostBegun) && isSmall(end))
        ++end;
    if (hasGivenUp_ || (begun_.empty() && end < position + 2))
        return;
    try {
        if (!readers_)
            readers_ = std::make_unique<Readers>();
        for (; next_ < end; ++next_)
            begin(next_);
    } catch (const std::exception&) {
        giveUp();
    }
}

void ReadBackAhead::begin(std::size_t position) {
    const auto copy = copyAt(position);
    Readers::Job job([copy, formats = transfer_.furtherFormats(copy.relative.native()),
                      stop = transfer_.stop()](Transfer& transfer) {
        Read read;
        const TransferWatch watch = {
            .onBytes = [&](std::size_t count) { read.chunks.push_back(count); },
            .onAccess = [&](const FileBeneath&, FileAccess access) { read.access = access; },
            .stop = stop,
            .furtherFormats = formats};
        try {
            read.copy = Verifier::readDestination(transfer, copy, watch);
        } catch (...) {
            read.failure = std::current_exception();
        }
        return read;
    });
    begun_.push_back({position, readers_->put(std::move(job))});
}

std::optional<ReadBackAhead::Read> ReadBackAhead::takeIfBegun(std::size_t position) {
    // One that nobody asked for, since its row had failed before.
    while (!begun_.empty() && begun_.front().position < position)
        begun_.pop_front();
    if (begun_.empty() || begun_.front().position != position)
        return std::nullopt;
    auto read = begun_.front().read.get();
    begun_.pop_front();
    if (!read.failure || !isOurShortage(read.failure))
        return read;
    giveUp();
    return std::nullopt;
}

/// The readers let go of what they hold: from here on all are read in their turn.
void ReadBackAhead::giveUp() {
    hasGivenUp_ = true;
    readers_.reset();
    begun_.clear();
}

} // namespace slatewise
