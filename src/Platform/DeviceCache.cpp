#include "Platform/DeviceCache.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace slatewise::DeviceCache {

namespace {

bool isOutsideTheKernel(const std::filesystem::path& path) {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 && facts.f_type == FUSE_SUPER_MAGIC;
}

/// "/dev/sdb1" for the numbers that stand for it, empty when the system knows no such device.
std::filesystem::path devicePath(dev_t numbers) {
    const auto known =
        "/sys/dev/block/" + std::to_string(major(numbers)) + ":" + std::to_string(minor(numbers));
    std::error_code failure;
    auto name = std::filesystem::read_symlink(known, failure).filename().native();
    // The system's way to write a slash in a name of one part.
    std::replace(name.begin(), name.end(), '!', '/');
    return name.empty() ? std::filesystem::path() : std::filesystem::path("/dev") / name;
}

/// Invalid when there is no device or it may not be opened.
FileDescriptor openDevice(const std::filesystem::path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0)
        return FileDescriptor();
    return FileDescriptor(::open(devicePath(facts.st_dev).c_str(), O_RDONLY | O_CLOEXEC));
}

} // namespace

Drop drop(const std::filesystem::path& path) {
    if (!isOutsideTheKernel(path))
        return Drop::NotNeeded;
    const auto device = openDevice(path);
    // Only what is written can be dropped.
    if (!device || ::fsync(device.get()) != 0 ||
        ::posix_fadvise(device.get(), 0, 0, POSIX_FADV_DONTNEED) != 0)
        return Drop::NotPossible;
    return Drop::Done;
}

} // namespace slatewise::DeviceCache
