#include "Platform/Files/FileLock.h"

#include "Platform/Error.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace slatewise {

FileLock::FileLock(const std::filesystem::path& file) {
    constexpr mode_t kOwnersAlone = 0600;
    file_ = FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnersAlone));
    if (!file_)
        throw PosixError("open", file, errno);
    while (::flock(file_.get(), LOCK_EX) != 0) {
        if (errno != EINTR)
            throw PosixError("flock", file, errno);
    }
}

} // namespace slatewise
