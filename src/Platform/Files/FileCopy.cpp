#include "Platform/Files/FileCopy.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Uuid.h"

#include <fcntl.h>

#include <array>
#include <cerrno>

namespace slatewise {

namespace {

std::int64_t sizeOf(const FileDescriptor& opened, const FileBeneath& file) {
    struct stat facts {};
    if (::fstat(opened.get(), &facts) != 0)
        throw PosixError("stat", file.path(), errno);
    if (!S_ISREG(facts.st_mode))
        throw PosixError("open", file.path(), S_ISDIR(facts.st_mode) ? EISDIR : EINVAL);
    return facts.st_size;
}

/// Empty when there is nothing of that name.
FileDescriptor openRegularFile(const FileBeneath& file, std::int64_t largestBytes) {
    FileDescriptor opened;
    try {
        // Whatever else bears the name must not be waited for.
        opened = file.folder.open(file.relative, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    } catch (const PosixError& failure) {
        if (failure.code() == ENOENT)
            return opened;
        throw;
    }
    if (sizeOf(opened, file) > largestBytes)
        throw PosixError("open", file.path(), EFBIG);
    return opened;
}

void copyBytes(const FileDescriptor& source, const FileBeneath& from, const FileBeneath& to) {
    const auto target = to.folder.open(to.relative, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    std::array<char, 65536> buffer;
    std::int64_t copied = 0;
    for (;;) {
        const auto count = ::read(source.get(), buffer.data(), buffer.size());
        if (count < 0)
            throw PosixError("read", from.path(), errno);
        if (count == 0)
            break;
        FileSystem::writeAll(target, {buffer.data(), static_cast<std::size_t>(count)}, to.path());
        copied += count;
    }
    // The end may have come too early.
    if (copied != sizeOf(source, from))
        throw PosixError("read", from.path(), EIO);
    if (::fsync(target.get()) != 0)
        throw PosixError("fsync", to.path(), errno);
}

} // namespace

bool copyRegularFile(const FileBeneath& from, const FileBeneath& to, std::int64_t largestBytes) {
    const auto source = openRegularFile(from, largestBytes);
    if (!source)
        return false;
    auto temporary = to;
    temporary.relative += "." + Uuid::random().text() + ".tmp";
    try {
        copyBytes(source, from, temporary);
        to.folder.rename(temporary.relative, to.relative);
    } catch (const PosixError&) {
        try {
            to.folder.removeFile(temporary.relative);
        } catch (const PosixError&) {
            // The first failure says more.
        }
        throw;
    }
    return true;
}

} // namespace slatewise
