#include "Platform/Files/UncachedFile.h"

#include "Platform/Error.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <new>

namespace slatewise {

namespace {

/// Blocks of 4096 bytes satisfy every device in use; one that wants more refuses the transfer,
/// which then goes through the cache.
constexpr std::size_t kBlockSize = 4096;

struct Opened {
    FileDescriptor descriptor;
    FileAccess access;
};

Opened openDirectIfPossible(const std::filesystem::path& path, int flags) {
    constexpr mode_t kReadableByAll = 0644;
    const int all = flags | O_CLOEXEC;
    if (FileDescriptor direct(::open(path.c_str(), all | O_DIRECT, kReadableByAll)); direct)
        return {std::move(direct), FileAccess::Direct};
    if (errno != EINVAL)
        throw PosixError("open", path, errno);
    FileDescriptor cached(::open(path.c_str(), all, kReadableByAll));
    if (!cached)
        throw PosixError("open", path, errno);
    return {std::move(cached), FileAccess::CacheDropped};
}

/// Opening a device can move a tape or reset a port, so the type is looked at first.
void requireRegularFile(const std::filesystem::path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0)
        throw PosixError("open", path, errno);
    if (S_ISDIR(facts.st_mode))
        throw PosixError("open", path, EISDIR);
    if (!S_ISREG(facts.st_mode)) {
        throw Error("open " + Text::displayable(path.native()) +
                    ": a FIFO, a socket or a device is no file");
    }
}

} // namespace

TransferBuffer::TransferBuffer(std::size_t size) : size_(size) {
    void* const memory =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    start_ = static_cast<std::byte*>(memory);
}

TransferBuffer::~TransferBuffer() {
    ::munmap(start_, size_);
}

UncachedFile::UncachedFile(FileDescriptor descriptor, std::filesystem::path path, FileAccess access)
    : descriptor_(std::move(descriptor)), path_(std::move(path)), access_(access),
      isDirect_(access == FileAccess::Direct) {}

UncachedFile UncachedFile::openForReading(const std::filesystem::path& path) {
    requireRegularFile(path);
    // The type may have changed since: without O_NONBLOCK a FIFO put in its place would hold us.
    auto [descriptor, access] = openDirectIfPossible(path, O_RDONLY | O_NONBLOCK);
    UncachedFile file(std::move(descriptor), path, access);
    // Also for direct access: some file systems quietly answer single files from the cache.
    file.dropFromCache();
    return file;
}

UncachedFile UncachedFile::createForWriting(const std::filesystem::path& path) {
    auto [descriptor, access] =
        openDirectIfPossible(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    return UncachedFile(std::move(descriptor), path, access);
}

std::size_t UncachedFile::read(std::span<std::byte> into) {
    auto count = ::read(descriptor_.get(), into.data(), into.size());
    if (count < 0 && errno == EINVAL && isDirect_) {
        leaveDirectAccess();
        dropFromCache();
        count = ::read(descriptor_.get(), into.data(), into.size());
    }
    if (count < 0)
        throw PosixError("read", path_, errno);
    // Past an unaligned end nothing but the end follows, unless the file is growing.
    if (isDirect_ && static_cast<std::size_t>(count) % kBlockSize != 0)
        isDirect_ = ::fcntl(descriptor_.get(), F_SETFL, 0) != 0;
    return static_cast<std::size_t>(count);
}

void UncachedFile::write(std::span<const std::byte> from) {
    const auto tail = isDirect_ ? from.size() % kBlockSize : 0;
    writeAll(from.first(from.size() - tail));
    if (tail > 0) {
        // A device only takes whole blocks.
        isDirect_ = ::fcntl(descriptor_.get(), F_SETFL, 0) != 0;
        writeAll(from.last(tail));
    }
}

void UncachedFile::writeAll(std::span<const std::byte> from) {
    while (!from.empty()) {
        const auto count = ::write(descriptor_.get(), from.data(), from.size());
        if (count < 0 && errno == EINVAL && isDirect_) {
            leaveDirectAccess();
            continue;
        }
        if (count < 1)
            throw PosixError("write", path_, count < 0 ? errno : EIO);
        from = from.subspan(static_cast<std::size_t>(count));
    }
}

void UncachedFile::sync() {
    if (::fsync(descriptor_.get()) != 0)
        throw PosixError("fsync", path_, errno);
    if (!isDirect_)
        dropFromCache();
}

void UncachedFile::leaveDirectAccess() {
    if (::fcntl(descriptor_.get(), F_SETFL, 0) != 0)
        throw PosixError("fcntl", path_, errno);
    isDirect_ = false;
    access_ = FileAccess::CacheDropped;
}

void UncachedFile::dropFromCache() const noexcept {
    // Advice: the system may decline it, and there is nothing better to ask for.
    (void)::posix_fadvise(descriptor_.get(), 0, 0, POSIX_FADV_DONTNEED);
}

} // namespace slatewise
