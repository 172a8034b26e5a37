#include "Floor.h"
#include "Primitives.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace slatewise::bench {

namespace {

constexpr int kChunks = 4;

struct Chunk {
    char* bytes = nullptr;
    /// Negative: the file could not be read.
    ssize_t count = 0;
};

/// Chunks on their way from one thread to the next. No more of them exist than the ring has.
class Queue {
public:
    void put(Chunk chunk) {
        const std::lock_guard lock(mutex_);
        chunks_.push_back(chunk);
        arrival_.notify_one();
    }

    Chunk take() {
        std::unique_lock lock(mutex_);
        arrival_.wait(lock, [this] { return !chunks_.empty(); });
        const auto first = chunks_.front();
        chunks_.pop_front();
        return first;
    }

private:
    std::mutex mutex_;
    std::condition_variable arrival_;
    std::deque<Chunk> chunks_;
};

/// Reads a whole file into what `empty` has to offer.
void readInto(int file, Queue& empty, Queue& read) {
    for (;;) {
        auto chunk = empty.take();
        chunk.count = ::read(file, chunk.bytes, kChunkBytes);
        const bool isLast = chunk.count <= 0;
        read.put(chunk);
        if (isLast)
            return;
    }
}

struct Ring {
    Ring() {
        for (int chunk = 0; chunk < kChunks; ++chunk) {
            buffers.push_back(chunkBuffer());
            empty.put({buffers.back().get(), 0});
        }
    }
    std::vector<Buffer> buffers;
    Queue empty, read, hashed;
};

Digest hashAll(Ring& ring, int source, Queue& next) {
    std::thread reader([&] { readInto(source, ring.empty, ring.read); });
    Hash hash;
    ssize_t count = 0;
    do {
        const auto chunk = ring.read.take();
        count = chunk.count;
        if (count > 0)
            hash.add(chunk.bytes, static_cast<std::size_t>(count));
        next.put(chunk);
    } while (count > 0);
    reader.join();
    if (count < 0)
        fail("read");
    return hash.finish();
}

Digest copyFile(const std::string& from, const std::string& to) {
    Ring ring;
    const int source = openSource(from);
    const int copy = openCopy(to);
    std::thread writer([&] {
        for (auto chunk = ring.hashed.take(); chunk.count > 0; chunk = ring.hashed.take()) {
            writeChunk(copy, chunk.bytes, static_cast<std::size_t>(chunk.count));
            ring.empty.put(chunk);
        }
    });
    const auto digest = hashAll(ring, source, ring.hashed);
    writer.join();
    finishCopy(source, copy, from, to);
    return digest;
}

Digest hashFile(const std::string& path) {
    Ring ring;
    const int file = openSource(path);
    const auto digest = hashAll(ring, file, ring.empty);
    ::close(file);
    return digest;
}

} // namespace

void copyInAPipeline(const std::filesystem::path& from, const std::filesystem::path& to) {
    copyAndProve(from, to, copyFile, hashFile);
}

} // namespace slatewise::bench
