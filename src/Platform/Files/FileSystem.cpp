#include "Platform/Files/FileSystem.h"

#include "Platform/Error.h"

#include <fcntl.h>
#include <sys/statvfs.h>

#include <array>
#include <cerrno>
#include <limits>
#include <vector>

namespace slatewise::FileSystem {

namespace {

constexpr unsigned kWantedAttributes =
    STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_CTIME | STATX_BTIME | STATX_INO;

/// Empty for a moment outside the years 1 to 9999: no date of ours can be written for it, and what
/// stands there is a broken clock or a broken file system.
std::optional<Instant> toInstant(const statx_timestamp& moment) {
    using namespace std::chrono;
    constexpr seconds kFirst = sys_days(January / 1 / 1).time_since_epoch();
    constexpr seconds kPastLast = sys_days(January / 1 / 10000).time_since_epoch();
    const seconds whole(moment.tv_sec);
    if (whole < kFirst || whole >= kPastLast)
        return std::nullopt;
    return Instant(whole) + microseconds(moment.tv_nsec / 1000);
}

ItemType typeOf(unsigned mode) {
    if (S_ISREG(mode))
        return ItemType::RegularFile;
    if (S_ISDIR(mode))
        return ItemType::Folder;
    return S_ISLNK(mode) ? ItemType::SymbolicLink : ItemType::Special;
}

/// Gives an errno value, 0 for success.
int readAttributes(int folder, const char* name, int flags, Attributes& result) noexcept {
    struct statx facts {};
    if (::statx(folder, name, flags | AT_NO_AUTOMOUNT, kWantedAttributes, &facts) != 0)
        return errno;
    result.type = typeOf(facts.stx_mode);
    result.sizeBytes =
        (facts.stx_mask & STATX_SIZE) ? static_cast<std::int64_t>(facts.stx_size) : 0;
    if (facts.stx_mask & STATX_MTIME) {
        result.modified = toInstant(facts.stx_mtime);
        result.exactModified = timespec{facts.stx_mtime.tv_sec, facts.stx_mtime.tv_nsec};
    }
    if (facts.stx_mask & STATX_CTIME)
        result.changed = timespec{facts.stx_ctime.tv_sec, facts.stx_ctime.tv_nsec};
    if (facts.stx_mask & STATX_INO)
        result.number = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME)
        result.created = toInstant(facts.stx_btime);
    return 0;
}

bool isFolder(const std::filesystem::path& path) noexcept {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

constexpr mode_t kReadableByAll = 0644;
constexpr mode_t kOwnersAlone = 0600;

FileDescriptor open(const std::filesystem::path& path, int flags, mode_t mode = kReadableByAll) {
    FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, mode));
    if (!file)
        throw PosixError("open", path, errno);
    return file;
}

void sync(const FileDescriptor& file, const std::filesystem::path& path) {
    if (::fsync(file.get()) != 0)
        throw PosixError("fsync", path, errno);
}

} // namespace

std::optional<Attributes> attributesIn(int folderDescriptor, const char* name) noexcept {
    Attributes result;
    if (readAttributes(folderDescriptor, name, AT_SYMLINK_NOFOLLOW, result) != 0)
        return std::nullopt;
    return result;
}

std::optional<Attributes> attributesOf(int descriptor, int flags) noexcept {
    Attributes result;
    if (readAttributes(descriptor, "", flags | AT_EMPTY_PATH, result) != 0)
        return std::nullopt;
    return result;
}

Attributes attributes(const std::filesystem::path& path) {
    Attributes result;
    if (const int code = readAttributes(AT_FDCWD, path.c_str(), 0, result))
        throw PosixError("stat", path, code);
    return result;
}

std::optional<Attributes> attributesIfAny(const std::filesystem::path& path) noexcept {
    Attributes result;
    if (readAttributes(AT_FDCWD, path.c_str(), 0, result) != 0)
        return std::nullopt;
    return result;
}

bool exists(const std::filesystem::path& path) noexcept {
    struct stat facts {};
    return ::lstat(path.c_str(), &facts) == 0;
}

std::set<std::filesystem::path> entriesIfAny(const std::filesystem::path& folder) {
    std::error_code failure;
    std::set<std::filesystem::path> entries;
    std::filesystem::directory_iterator entry(folder, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        entries.insert(entry->path());
    return entries;
}

// The library's own way to do this gives up at a thousand levels.
void createFolders(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> missing;
    for (auto at = folder; !at.empty() && !isFolder(at); at = at.parent_path())
        missing.push_back(at);
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (createNewFolder(*next)) {
            const auto parent = next->parent_path();
            syncFolder(parent.empty() ? "." : parent);
        } else if (!isFolder(*next)) {
            // Who has made it meanwhile may be making the same folders.
            throw PosixError("mkdir", *next, EEXIST);
        }
    }
}

bool createNewFolder(const std::filesystem::path& folder) {
    constexpr mode_t kListableByAll = 0755;
    if (::mkdir(folder.c_str(), kListableByAll) == 0)
        return true;
    if (errno != EEXIST)
        throw PosixError("mkdir", folder, errno);
    return false;
}

void remove(const std::filesystem::path& path) {
    std::error_code failure;
    std::filesystem::remove_all(path, failure);
    if (failure)
        throw PosixError("remove", path, failure.value());
}

void setModified(const std::filesystem::path& path, timespec moment) {
    const std::array<timespec, 2> moments = {timespec{0, UTIME_OMIT}, moment};
    if (::utimensat(AT_FDCWD, path.c_str(), moments.data(), 0) != 0)
        throw PosixError("utimensat", path, errno);
}

void writeAll(const FileDescriptor& file, std::string_view content,
              const std::filesystem::path& path) {
    while (!content.empty()) {
        const auto written = ::write(file.get(), content.data(), content.size());
        if (written < 1)
            throw PosixError("write", path, written < 0 ? errno : EIO);
        content.remove_prefix(static_cast<std::size_t>(written));
    }
}

void writeAndSync(const FileDescriptor& file, std::string_view content,
                  const std::filesystem::path& path) {
    writeAll(file, content, path);
    sync(file, path);
}

void writeAndSync(const FileDescriptor& file, const TextSource& content,
                  const std::filesystem::path& path) {
    constexpr std::size_t kWriteBytes = 1 << 20;
    std::string pending;
    content([&](std::string_view text) {
        pending += text;
        if (pending.size() < kWriteBytes)
            return;
        writeAll(file, pending, path);
        pending.clear();
    });
    writeAndSync(file, pending, path);
}

std::string read(const std::filesystem::path& path) {
    return readAll(open(path, O_RDONLY), std::numeric_limits<std::int64_t>::max(), path);
}

std::string readAll(const FileDescriptor& file, std::int64_t largestBytes,
                    const std::filesystem::path& path) {
    std::string content;
    std::array<char, 65536> buffer;
    for (;;) {
        const auto count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0)
            throw PosixError("read", path, errno);
        if (count == 0)
            return content;
        content.append(buffer.data(), static_cast<std::size_t>(count));
        if (static_cast<std::int64_t>(content.size()) > largestBytes)
            throw PosixError("read", path, EFBIG);
    }
}

namespace {

/// Takes from all but its owner what they might do with a regular file.
void makePrivate(const FileDescriptor& file) noexcept {
    struct stat facts {};
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    if (::fstat(file.get(), &facts) == 0 && S_ISREG(facts.st_mode) &&
        (facts.st_mode & kOthers) != 0)
        (void)::fchmod(file.get(), facts.st_mode & S_IRWXU);
}

} // namespace

void append(const std::filesystem::path& path, std::string_view content) {
    // A pipe in its place that nobody reads would hold us for ever.
    const auto file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK, kOwnersAlone);
    makePrivate(file);
    writeAll(file, content, path);
}

void syncFolder(const std::filesystem::path& folder) {
    sync(open(folder, O_RDONLY | O_DIRECTORY), folder);
}

void syncVolume(const std::filesystem::path& path) {
    const auto anyFolder = open(path, O_RDONLY);
    if (::syncfs(anyFolder.get()) != 0)
        throw PosixError("syncfs", path, errno);
}

Capacity volumeCapacity(const std::filesystem::path& path) noexcept {
    struct statvfs facts {};
    if (::statvfs(path.c_str(), &facts) != 0)
        return {};
    const auto blockSize = static_cast<std::int64_t>(facts.f_frsize);
    return {static_cast<std::int64_t>(facts.f_blocks) * blockSize,
            static_cast<std::int64_t>(facts.f_bavail) * blockSize};
}

} // namespace slatewise::FileSystem
