#include "Platform/Files/RootFolder.h"

#include "Platform/Error.h"
#include "Platform/Uuid.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>
#include <string_view>

namespace slatewise {

namespace {

constexpr mode_t kOpenToAll = 0755;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

std::optional<struct stat> statusOf(const FileDescriptor& item) noexcept {
    struct stat facts {};
    if (::fstat(item.get(), &facts) != 0)
        return std::nullopt;
    return facts;
}

/// Of the file system itself, and not what is remembered of its last answer.
bool askAgain(int folder, const char* name, int flags, struct statx& facts) noexcept {
    return ::statx(folder, name, flags | AT_STATX_FORCE_SYNC, STATX_INO, &facts) == 0;
}

} // namespace

RootFolder::RootFolder(std::filesystem::path path)
    : path_(std::move(path)), descriptor_(::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (!descriptor_)
        throw PosixError("open", path_, errno);
    if (const auto facts = statusOf(descriptor_))
        medium_ = FolderIdentity::mediumIn(facts->st_dev).value_or(0);
}

RootFolder RootFolder::below(const std::filesystem::path& relative) const {
    return {path_ / relative, open(relative, O_PATH | O_DIRECTORY)};
}

bool RootFolder::isSame(const RootFolder& other) const noexcept {
    const auto one = statusOf(descriptor_);
    const auto another = statusOf(other.descriptor_);
    return one && another && one->st_dev == another->st_dev && one->st_ino == another->st_ino;
}

bool RootFolder::isStillAtItsPath() const noexcept {
    struct statx held {};
    struct statx found {};
    return askAgain(descriptor_.get(), "", AT_EMPTY_PATH, held) &&
           askAgain(AT_FDCWD, path_.c_str(), 0, found) && held.stx_ino == found.stx_ino &&
           held.stx_dev_major == found.stx_dev_major && held.stx_dev_minor == found.stx_dev_minor &&
           holdsSameMedium(makedev(held.stx_dev_major, held.stx_dev_minor));
}

bool RootFolder::holdsSameMedium(dev_t device) const noexcept {
    // Nobody was taken out when it is us who cannot look.
    return medium_ == 0 || FolderIdentity::mediumIn(device).value_or(medium_) == medium_;
}

FileDescriptor RootFolder::open(const std::filesystem::path& relative, int flags,
                                Links links) const {
    std::string_view name = relative.native();
    FileDescriptor way;
    const auto from = [&] {
        return way ? way.get() : descriptor_.get();
    };
    // A tree may be deeper than a path may be long.
    while (name.size() >= PATH_MAX) {
        const auto end = name.rfind('/', PATH_MAX - 1);
        if (end == std::string_view::npos)
            throw PosixError("open", path_ / relative, ENAMETOOLONG);
        way = OpenBeneath::open(from(), std::string(name.substr(0, end)), O_PATH | O_DIRECTORY,
                                links);
        if (!way)
            throw PosixError("open", path_ / relative, errno);
        name.remove_prefix(end + 1);
    }
    auto opened = OpenBeneath::open(from(), name.empty() ? "." : std::string(name), flags, links);
    if (!opened) {
        const int code = errno;
        throw PosixError("open", path_ / relative,
                         (flags & O_CREAT) != 0 ? whyNotMade(relative, code) : code);
    }
    return opened;
}

FileSystem::Attributes RootFolder::attributes(const std::filesystem::path& relative,
                                              Links links) const {
    const int flags = links == Links::Refuse ? O_PATH | O_NOFOLLOW : O_PATH;
    const auto item = open(relative, flags, links);
    const auto attributes = FileSystem::attributesOf(item.get());
    if (!attributes)
        throw PosixError("stat", path_ / relative, errno);
    return *attributes;
}

FileSystem::Attributes RootFolder::attributesNow(const std::filesystem::path& relative) const {
    const auto item = open(relative, O_PATH | O_NOFOLLOW);
    const auto attributes = FileSystem::attributesOf(item.get(), AT_STATX_FORCE_SYNC);
    if (!attributes)
        throw PosixError("stat", path_ / relative, errno);
    return *attributes;
}

std::vector<std::string> RootFolder::names() const {
    auto listed = open("", O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, CloseFolder> folder(::fdopendir(listed.get()));
    if (!folder)
        throw PosixError("open", path_, errno);
    (void)listed.release();
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* const item = ::readdir(folder.get());
        if (!item)
            break;
        const std::string_view name = item->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        throw PosixError("readdir", path_, errno);
    std::sort(names.begin(), names.end());
    return names;
}

std::string RootFolder::read(const std::filesystem::path& relative,
                             std::int64_t largestBytes) const {
    const auto path = path_ / relative;
    const auto file = open(relative, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    const auto facts = FileSystem::attributesOf(file.get());
    if (!facts || facts->type != FileSystem::ItemType::RegularFile)
        throw PosixError("open", path, facts ? EINVAL : errno);
    if (facts->sizeBytes > largestBytes)
        throw PosixError("read", path, EFBIG);
    return FileSystem::readAll(file, largestBytes, path);
}

FileDescriptor RootFolder::createAnew(const std::filesystem::path& relative) const {
    removeFile(relative);
    return open(relative, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
}

void RootFolder::write(const std::filesystem::path& relative,
                       const FileSystem::TextSource& content) const {
    FileSystem::writeAndSync(createAnew(relative), content, path_ / relative);
}

void RootFolder::writeAtomically(const std::filesystem::path& relative,
                                 std::string_view content) const {
    writeAtomically(relative, [&](const FileSystem::TextSink& put) { put(content); });
}

void RootFolder::writeAtomically(const std::filesystem::path& relative,
                                 const FileSystem::TextSource& content) const {
    const auto temporary = relative.parent_path() / (Uuid::random().text() + ".tmp");
    const auto file = open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    try {
        FileSystem::writeAndSync(file, content, path_ / relative);
        rename(temporary, relative);
    } catch (...) {
        ::unlinkat(open(relative.parent_path(), O_PATH | O_DIRECTORY).get(),
                   temporary.filename().c_str(), 0);
        throw;
    }
}

bool RootFolder::exists(const std::filesystem::path& relative) const {
    try {
        (void)open(relative, O_PATH | O_NOFOLLOW);
        return true;
    } catch (const PosixError& failure) {
        return failure.code() != ENOENT;
    }
}

RootFolder::Parent RootFolder::parentOf(const std::filesystem::path& relative) const {
    return {open(relative.parent_path(), O_PATH | O_DIRECTORY), relative.filename().native()};
}

void RootFolder::createFolders(const std::filesystem::path& relative) const {
    std::filesystem::path way;
    for (const auto& part : relative) {
        way /= part;
        // Somebody else may be making the same folders.
        if (part != "." && !createNewFolder(way))
            (void)open(way, O_PATH | O_DIRECTORY);
    }
}

bool RootFolder::createNewFolder(const std::filesystem::path& relative) const {
    const auto [parent, name] = parentOf(relative);
    if (::mkdirat(parent.get(), name.c_str(), kOpenToAll) == 0)
        return true;
    if (const int code = errno; code != EEXIST)
        throw PosixError("mkdir", path_ / relative, whyNotMade(relative, code));
    return false;
}

int RootFolder::whyNotMade(const std::filesystem::path& relative, int code) const noexcept {
    // What FAT, exFAT and NTFS say of a sign that they do not know, each in its own way.
    const bool isNameRefused = code == EINVAL || (code == ENOENT && exists(relative.parent_path()));
    return isNameRefused ? EILSEQ : code;
}

void RootFolder::removeFile(const std::filesystem::path& relative) const {
    const auto [parent, name] = parentOf(relative);
    if (::unlinkat(parent.get(), name.c_str(), 0) != 0 && errno != ENOENT)
        throw PosixError("unlink", path_ / relative, errno);
}

void RootFolder::removeFolder(const std::filesystem::path& relative) const {
    const auto [parent, name] = parentOf(relative);
    if (::unlinkat(parent.get(), name.c_str(), AT_REMOVEDIR) != 0)
        throw PosixError("rmdir", path_ / relative, errno);
}

void RootFolder::rename(const std::filesystem::path& from, const std::filesystem::path& to) const {
    const auto [fromParent, fromName] = parentOf(from);
    const auto [toParent, toName] = parentOf(to);
    if (::renameat(fromParent.get(), fromName.c_str(), toParent.get(), toName.c_str()) != 0)
        throw PosixError("rename", path_ / from, errno);
}

void RootFolder::renameToFree(const std::filesystem::path& from,
                              const std::filesystem::path& to) const {
    const auto [fromParent, fromName] = parentOf(from);
    const auto [toParent, toName] = parentOf(to);
    if (::renameat2(fromParent.get(), fromName.c_str(), toParent.get(), toName.c_str(),
                    RENAME_NOREPLACE) == 0)
        return;
    // Shares and file systems outside the kernel may not know how to do that in one step.
    if (errno != EINVAL && errno != ENOSYS)
        throw PosixError("rename", path_ / from, errno);
    if (exists(to))
        throw PosixError("rename", path_ / to, EEXIST);
    rename(from, to);
}

FileDescriptor RootFolder::tryToLock() const {
    auto folder = open("", O_RDONLY | O_DIRECTORY);
    if (::flock(folder.get(), LOCK_EX | LOCK_NB) == 0)
        return folder;
    const int code = errno;
    folder = FileDescriptor();
    errno = code;
    return folder;
}

FileSystem::Capacity RootFolder::capacity() const noexcept {
    struct statvfs facts {};
    if (::fstatvfs(descriptor_.get(), &facts) != 0)
        return {};
    const auto blockSize = static_cast<std::int64_t>(facts.f_frsize);
    return {static_cast<std::int64_t>(facts.f_blocks) * blockSize,
            static_cast<std::int64_t>(facts.f_bavail) * blockSize};
}

void RootFolder::sync() const {
    // What is open for its name alone cannot be synced.
    const auto folder = open("", O_RDONLY | O_DIRECTORY);
    if (::fsync(folder.get()) != 0)
        throw PosixError("fsync", path_, errno);
}

void RootFolder::syncVolume() const {
    const auto folder = open("", O_RDONLY | O_DIRECTORY);
    if (::syncfs(folder.get()) != 0)
        throw PosixError("syncfs", path_, errno);
}

} // namespace slatewise
