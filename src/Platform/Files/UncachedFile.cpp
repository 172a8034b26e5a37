#include "Platform/Files/UncachedFile.h"

#include "Platform/Error.h"

#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace slatewise {

namespace {

/// Blocks of 4096 bytes satisfy every device in use; one that wants more refuses the transfer,
/// which then goes through the cache.
constexpr std::size_t kBlockSize = TransferBuffer::alignment;

/// The largest block of any file system; what lies among its records is smaller.
constexpr std::int64_t kLargestRecord = 65'536;

struct Opened {
    FileDescriptor descriptor;
    FileAccess access;
};

/// Calls `open` with `flags` for direct transfers, and where these are refused with `flags` alone.
template <typename Open>
Opened openDirectIfPossible(int flags, Open&& open) {
    try {
        return {open(flags | O_DIRECT), FileAccess::Direct};
    } catch (const PosixError& failure) {
        if (failure.code() != EINVAL)
            throw;
    }
    return {open(flags), FileAccess::CacheDropped};
}

// Younger than the headers we are built with.
constexpr long kCachestatCall = 451;
struct CachedRange {
    std::uint64_t offset = 0;
    /// 0: to the end.
    std::uint64_t length = 0;
};
struct CachedPages {
    std::uint64_t cached, dirty, writeback, evicted, recentlyEvicted;
};

/// As the kernel's own count, for kernels and file systems that do not know it. A file that cannot
/// be looked at counts as kept.
bool hasMappedPagesInMemory(int descriptor) noexcept {
    constexpr std::size_t kWindow = std::size_t{64} << 20;
    struct stat facts {};
    if (::fstat(descriptor, &facts) != 0)
        return true;
    std::array<unsigned char, kWindow / kBlockSize> pages{};
    for (off_t at = 0; at < facts.st_size; at += static_cast<off_t>(kWindow)) {
        const auto length = std::min(kWindow, static_cast<std::size_t>(facts.st_size - at));
        void* const window = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor, at);
        if (window == MAP_FAILED)
            return true;
        const bool isKnown = ::mincore(window, length, pages.data()) == 0;
        ::munmap(window, length);
        const auto isKept = [](unsigned char page) {
            return (page & 1) != 0;
        };
        const auto count = (length + kBlockSize - 1) / kBlockSize;
        if (!isKnown || std::any_of(pages.begin(), pages.begin() + count, isKept))
            return true;
    }
    return false;
}

bool hasPagesInMemory(int descriptor) noexcept {
    CachedRange wholeFile;
    CachedPages count{};
    if (::syscall(kCachestatCall, descriptor, &wholeFile, &count, 0) == 0)
        return count.cached > 0;
    return hasMappedPagesInMemory(descriptor);
}

/// Whether the file lies among the file system's own records, whose memory nobody but the file
/// system can empty, or nowhere yet.
bool isAmongRecords(int descriptor) noexcept {
    constexpr std::uint32_t kPlaceless =
        FIEMAP_EXTENT_DATA_INLINE | FIEMAP_EXTENT_DELALLOC | FIEMAP_EXTENT_UNKNOWN;
    alignas(fiemap) std::array<std::byte, sizeof(fiemap) + sizeof(fiemap_extent)> room{};
    auto* const places = reinterpret_cast<fiemap*>(room.data());
    places->fm_length = FIEMAP_MAX_OFFSET;
    places->fm_extent_count = 1;
    // A file system that cannot tell has no such files.
    return ::ioctl(descriptor, FS_IOC_FIEMAP, places) == 0 && places->fm_mapped_extents > 0 &&
           (places->fm_extents[0].fe_flags & kPlaceless) != 0;
}

/// Whether new files that are small come to lie among the file system's own records, unless they
/// are given blocks before.
bool putsSmallFilesAmongRecords(int descriptor) noexcept {
    struct statfs facts {};
    if (::fstatfs(descriptor, &facts) != 0)
        return false;
    const auto fileSystem = static_cast<std::uint32_t>(facts.f_type);
    return fileSystem == BTRFS_SUPER_MAGIC || fileSystem == F2FS_SUPER_MAGIC;
}

FileSystem::Attributes requireRegularFile(int descriptor, const FileBeneath& file) {
    const auto facts = FileSystem::attributesOf(descriptor);
    if (!facts)
        throw PosixError("open", file.path(), errno);
    if (facts->type == FileSystem::ItemType::Folder)
        throw PosixError("open", file.path(), EISDIR);
    if (facts->type != FileSystem::ItemType::RegularFile)
        throw NotARegularFile(file.path());
    return *facts;
}

/// Whether the file system drops a dot at the end of a name, and lists it as another one.
bool isNamedOtherwise(const FileBeneath& file) {
    const auto endsInDot = [](const std::filesystem::path& part) {
        return part.native().ends_with('.');
    };
    if (!std::any_of(file.relative.begin(), file.relative.end(), endsInDot))
        return false;
    struct statfs facts {};
    (void)::statfs(file.folder.path().c_str(), &facts);
    const auto fileSystem = static_cast<std::uint32_t>(facts.f_type);
    return fileSystem == MSDOS_SUPER_MAGIC || fileSystem == EXFAT_SUPER_MAGIC;
}

} // namespace

TransferBuffer::TransferBuffer(std::size_t size) {
    constexpr std::size_t kLargePage = std::size_t{2} << 20;
    const bool isLarge = size >= kLargePage / 2;
    // So that it can begin where a large page begins, and end where one ends.
    const auto mapped = isLarge ? size + 2 * kLargePage : size;
    void* const memory =
        ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    mapped_ = {static_cast<std::byte*>(memory), mapped};
    bytes_ = mapped_.first(size);
    if (!isLarge)
        return;
    const auto behindBorder = reinterpret_cast<std::uintptr_t>(memory) % kLargePage;
    bytes_ = mapped_.subspan(kLargePage - behindBorder, size);
    // Advice: small pages do as well.
    const auto pages = (size + kLargePage - 1) / kLargePage;
    (void)::madvise(bytes_.data(), pages * kLargePage, MADV_HUGEPAGE);
}

TransferBuffer::~TransferBuffer() {
    ::munmap(mapped_.data(), mapped_.size());
}

UncachedFile::UncachedFile(FileDescriptor descriptor, std::filesystem::path path, FileAccess access)
    : descriptor_(std::move(descriptor)), path_(std::move(path)), access_(access),
      isDirect_(access == FileAccess::Direct) {}

UncachedFile UncachedFile::openForReading(const FileBeneath& file) {
    // Opening a device can move a tape or reset a port, so the type is looked at first.
    (void)requireRegularFile(file.folder.open(file.relative, O_PATH, file.links).get(), file);
    // The type may have changed since: without O_NONBLOCK a FIFO put in its place would hold us.
    auto [descriptor, access] = openDirectIfPossible(O_RDONLY | O_NONBLOCK, [&](int flags) {
        return file.folder.open(file.relative, flags, file.links);
    });
    const auto facts = requireRegularFile(descriptor.get(), file);
    UncachedFile opened(std::move(descriptor), file.path(), access);
    opened.atOpening_ = facts;
    // Also for direct access: some file systems quietly answer single files from the cache.
    opened.dropFromCache();
    return opened;
}

UncachedFile UncachedFile::createForWriting(const FileBeneath& file) {
    constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    if (isNamedOtherwise(file))
        throw PosixError("open", file.path(), EILSEQ);
    // A file system may refuse direct transfers only after it has made the file, and a second
    // attempt could not tell that file from a stranger's. So it is made first and asked then.
    auto descriptor = file.folder.open(file.relative, kNewFile);
    const bool isDirect = ::fcntl(descriptor.get(), F_SETFL, O_DIRECT) == 0;
    return {std::move(descriptor), file.path(),
            isDirect ? FileAccess::Direct : FileAccess::CacheDropped};
}

bool UncachedFile::isKeptInMemory() const noexcept {
    if (sizeAtOpening() <= kLargestRecord && isAmongRecords(descriptor_.get()))
        return true;
    if (!hasPagesInMemory(descriptor_.get()))
        return false;
    // What another program was just using may be let go now.
    dropFromCache();
    return hasPagesInMemory(descriptor_.get());
}

FileSystem::Attributes UncachedFile::attributes() const {
    const auto attributes = FileSystem::attributesOf(descriptor_.get());
    if (!attributes)
        throw PosixError("stat", path_, errno);
    return *attributes;
}

void UncachedFile::setModified(timespec moment) {
    const auto set = [&](timespec accessed) {
        const std::array<timespec, 2> moments = {accessed, moment};
        if (::futimens(descriptor_.get(), moments.data()) != 0)
            throw PosixError("utimensat", path_, errno);
    };
    set({0, UTIME_OMIT});
    struct stat facts {};
    // Some drivers in user space take both dates or none, and say nothing.
    if (::fstat(descriptor_.get(), &facts) == 0 &&
        std::abs(facts.st_mtim.tv_sec - moment.tv_sec) > 2)
        set(moment);
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
    // So that it can be read back from the device. Where that is refused its proof says so.
    if (from.size() <= kBlockSize && putsSmallFilesAmongRecords(descriptor_.get()))
        (void)::fallocate(descriptor_.get(), FALLOC_FL_KEEP_SIZE, 0, kBlockSize);
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
