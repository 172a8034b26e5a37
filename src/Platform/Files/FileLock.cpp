#include "Platform/Files/FileLock.h"

#include "Platform/Error.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace slatewise {

namespace {

/// The system knows no lock that is waited for with a limit, so it is asked again and again.
constexpr std::chrono::milliseconds kPause{50};

} // namespace

FileLock::FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    constexpr mode_t kOwnersAlone = 0600;
    file_ = FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnersAlone));
    if (!file_)
        throw PosixError("open", file, errno);
    while (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end)
            throw PosixError("flock", file, errno);
        std::this_thread::sleep_for(kPause);
    }
}

} // namespace slatewise
