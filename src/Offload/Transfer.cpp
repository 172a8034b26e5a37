#include "Offload/Transfer.h"

#include "Platform/Error.h"
#include "Platform/Mailbox.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <exception>
#include <future>
#include <thread>
#include <variant>

namespace slatewise {

namespace {

/// One being read, one being hashed, one waiting and one being written.
constexpr std::size_t kRingChunks = 4;
/// One being written, and the next at hand: a disk should never wait for us.
constexpr int kChunksToWrite = 2;
/// How long a read that nobody needs any more is waited for, so that a card can be unmounted as
/// soon as a run is over.
constexpr std::chrono::milliseconds kPatience{500};

void throwIfCancelled(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

constexpr std::size_t aligned(std::size_t size) {
    constexpr auto kStep = TransferBuffer::alignment;
    return (size + kStep - 1) / kStep * kStep;
}

bool isSame(const FileBeneath& one, const FileBeneath& other) {
    return &one.folder == &other.folder && one.relative == other.relative &&
           one.links == other.links;
}

struct Chunk {
    std::span<std::byte> buffer;
    std::size_t count;

    std::span<const std::byte> bytes() const { return buffer.first(count); }
};

// What the two threads have to tell.

struct ChunkRead {
    Chunk chunk;
};
struct ReadEnded {
    /// Null at the file's end.
    std::exception_ptr failure;
};
struct ChunkWritten {
    Chunk chunk;
};
struct ChunkNotWritten {
    /// Null when it was left out, after a request to stop or an earlier failure.
    std::exception_ptr failure;
};
using Event = std::variant<ChunkRead, ReadEnded, ChunkWritten, ChunkNotWritten>;

/// The file being written.
struct Target {
    UncachedFile& file;
    std::stop_token stop;
    /// The writer's alone.
    bool hasFailed = false;
};

struct ChunkToWrite {
    Target* target;
    Chunk chunk;
};

/// What the threads share.
struct Exchange {
    explicit Exchange(std::size_t size) : ring(kRingChunks * aligned(size)) {
        for (std::size_t chunk = 0; chunk < kRingChunks; ++chunk)
            empty.put(ring.bytes().subspan(chunk * aligned(size), size));
    }

    TransferBuffer ring;
    Mailbox<std::span<std::byte>> empty;
    Mailbox<std::shared_ptr<UncachedFile>> toRead;
    Mailbox<ChunkToWrite> toWrite;
    /// For the thread that hashes.
    Mailbox<Event> events;
};

void readToEnd(Exchange& exchange, std::shared_ptr<UncachedFile> file, const std::stop_token& end) {
    while (const auto buffer = exchange.empty.take(end)) {
        if (end.stop_requested())
            return;
        std::size_t count = 0;
        std::exception_ptr failure;
        try {
            count = file->read(*buffer);
        } catch (...) {
            failure = std::current_exception();
        }
        if (count > 0) {
            exchange.events.put(ChunkRead{{*buffer, count}});
            continue;
        }
        exchange.empty.put(*buffer);
        // Whoever hears of the end may close the file, and then it shall be closed.
        file.reset();
        exchange.events.put(ReadEnded{failure});
        return;
    }
}

void readFiles(Exchange& exchange, const std::stop_token& end) {
    while (auto file = exchange.toRead.take(end))
        readToEnd(exchange, std::move(*file), end);
}

Event write(const ChunkToWrite& job, const std::stop_token& end) {
    auto& target = *job.target;
    if (target.hasFailed || target.stop.stop_requested() || end.stop_requested())
        return ChunkNotWritten{nullptr};
    try {
        target.file.write(job.chunk.bytes());
        return ChunkWritten{job.chunk};
    } catch (...) {
        target.hasFailed = true;
        return ChunkNotWritten{std::current_exception()};
    }
}

void writeChunks(Exchange& exchange, const std::stop_token& end) {
    while (const auto job = exchange.toWrite.take(end))
        exchange.events.put(write(*job, end));
}

/// One file between the two threads: what the thread does that hashes.
class Passage {
public:
    /// Without a target, what is hashed is done.
    Passage(Exchange& exchange, Target* target, const Transfer::Steps& steps,
            const std::stop_token& stop)
        : exchange_(exchange), target_(target), steps_(steps), stop_(stop) {}

    void run() {
        while (!stop_.stop_requested()) {
            if (isOver()) {
                if (readFailure_)
                    std::rethrow_exception(readFailure_);
                return;
            }
            passOn();
            if (canHash())
                hashNext();
            else if (const auto event = exchange_.events.take(stop_))
                std::visit(*this, *event);
            // What is written is told before the next chunk keeps this thread busy.
            while (const auto event = exchange_.events.takeIfAny())
                std::visit(*this, *event);
        }
        while (chunksToWrite_ > 0)
            std::visit(*this, *exchange_.events.take({}));
        throw CancellationError();
    }

    void operator()(const ChunkRead& event) { read_.push_back(event.chunk); }

    void operator()(const ReadEnded& event) {
        hasReadAll_ = true;
        readFailure_ = event.failure;
    }

    void operator()(const ChunkWritten& event) {
        --chunksToWrite_;
        finish(event.chunk);
    }

    void operator()(const ChunkNotWritten& event) {
        --chunksToWrite_;
        if (event.failure)
            std::rethrow_exception(event.failure);
    }

private:
    bool isOver() const {
        return hasReadAll_ && read_.empty() && hashed_.empty() && chunksToWrite_ == 0;
    }

    /// Not further ahead of the writer than it takes to keep it busy.
    bool canHash() const { return !read_.empty() && hashed_.empty(); }

    void hashNext() {
        const auto chunk = read_.front();
        read_.pop_front();
        steps_.hash(chunk.bytes());
        if (target_)
            hashed_.push_back(chunk);
        else
            finish(chunk);
    }

    void passOn() {
        while (!hashed_.empty() && chunksToWrite_ < kChunksToWrite) {
            exchange_.toWrite.put({target_, hashed_.front()});
            hashed_.pop_front();
            ++chunksToWrite_;
        }
    }

    void finish(const Chunk& chunk) {
        const auto count = chunk.count;
        exchange_.empty.put(chunk.buffer);
        steps_.tell(count);
    }

    Exchange& exchange_;
    Target* const target_;
    const Transfer::Steps& steps_;
    const std::stop_token& stop_;
    std::deque<Chunk> read_;
    std::deque<Chunk> hashed_;
    /// Given to the writer and not yet answered for.
    int chunksToWrite_ = 0;
    bool hasReadAll_ = false;
    std::exception_ptr readFailure_;
};

} // namespace

/// The two threads and what they share.
class Transfer::Stages {
public:
    explicit Stages(std::size_t size)
        : exchange_(std::make_shared<Exchange>(size)),
          writer_(
              [exchange = exchange_](const std::stop_token& end) { writeChunks(*exchange, end); }) {
        std::packaged_task<void(std::stop_token)> reading(
            [exchange = exchange_](const std::stop_token& end) { readFiles(*exchange, end); });
        readerEnd_ = reading.get_future();
        reader_ = std::jthread(std::move(reading));
    }

    /// Waits for the writer, and for the reader only for a while.
    ~Stages() {
        reader_.request_stop();
        writer_.request_stop();
        writer_.join();
        if (readerEnd_.wait_for(kPatience) != std::future_status::ready)
            reader_.detach();
    }

    Stages(const Stages&) = delete;
    Stages& operator=(const Stages&) = delete;

    void beginToRead(std::shared_ptr<UncachedFile> file) { exchange_->toRead.put(std::move(file)); }

    /// Of the file that is being read.
    void carry(Target* target, const Steps& steps, const std::stop_token& stop) {
        Passage(*exchange_, target, steps, stop).run();
    }

private:
    std::shared_ptr<Exchange> exchange_;
    std::jthread writer_;
    std::future<void> readerEnd_;
    std::jthread reader_;
};

Transfer::Transfer(std::size_t size) : size_(std::max(size, leastChunkBytes)), buffer_(size_) {}

Transfer::~Transfer() = default;

void Transfer::read(std::shared_ptr<UncachedFile> file, const Steps& steps,
                    const std::stop_token& stop) {
    carry(std::move(file), nullptr, steps, stop);
}

void Transfer::copy(std::shared_ptr<UncachedFile> from, UncachedFile& to, const Steps& steps,
                    const std::stop_token& stop) {
    carry(std::move(from), &to, steps, stop);
}

Transfer::Stages& Transfer::stages() {
    if (!stages_)
        stages_ = std::make_unique<Stages>(size_);
    return *stages_;
}

std::shared_ptr<UncachedFile> Transfer::open(const FileBeneath& name) {
    if (prepared_ && isSame(prepared_->name, name))
        return prepared_->file;
    return std::make_shared<UncachedFile>(UncachedFile::openForReading(name));
}

void Transfer::prepare(const FileBeneath& next) {
    leavePrepared();
    try {
        prepared_.emplace(Prepared{next, open(next)});
        stages().beginToRead(prepared_->file);
    } catch (const std::exception&) {
        // Whoever comes to open it hears of that then; the file before it is none the worse.
        leavePrepared();
    }
}

/// What was read of it is of no use.
void Transfer::leavePrepared() {
    if (prepared_)
        stages_.reset();
    prepared_.reset();
}

void Transfer::carry(std::shared_ptr<UncachedFile> from, UncachedFile* to, const Steps& steps,
                     const std::stop_token& stop) {
    throwIfCancelled(stop);
    const bool isPrepared = prepared_ && prepared_->file == from;
    if (!isPrepared)
        leavePrepared();
    prepared_.reset();
    const bool isSmall = from->sizeAtOpening() <= static_cast<std::int64_t>(size_);
    if (isSmall && !isPrepared)
        return carryAlone(*from, to, steps, stop);
    if (!isPrepared)
        stages().beginToRead(std::move(from));
    // Outlives the writer, which may be at work on it when this ends early.
    std::optional<Target> target;
    try {
        if (isSmall && to)
            return carryWritingHere(*to, steps, stop);
        if (to)
            target.emplace(Target{*to, stop});
        stages().carry(target ? &*target : nullptr, steps, stop);
    } catch (...) {
        // They may be in the middle of the file.
        stages_.reset();
        throw;
    }
}

/// The writer has nothing to do beside a single chunk, and would only be waited for.
void Transfer::carryWritingHere(UncachedFile& to, const Steps& steps, const std::stop_token& stop) {
    const Steps withWriting = {.hash =
                                   [&](std::span<const std::byte> chunk) {
                                       steps.hash(chunk);
                                       to.write(chunk);
                                   },
                               .tell = steps.tell};
    stages().carry(nullptr, withWriting, stop);
}

void Transfer::carryAlone(UncachedFile& from, UncachedFile* to, const Steps& steps,
                          const std::stop_token& stop) {
    while (const auto count = from.read(buffer_.bytes())) {
        const std::span<const std::byte> chunk(buffer_.bytes().first(count));
        steps.hash(chunk);
        if (to)
            to->write(chunk);
        steps.tell(count);
        throwIfCancelled(stop);
    }
}

} // namespace slatewise
