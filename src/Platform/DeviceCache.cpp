#include "Platform/DeviceCache.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <string>

namespace slatewise::DeviceCache {

namespace {

bool isOutsideTheKernel(const std::filesystem::path& path) {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 && facts.f_type == FUSE_SUPER_MAGIC;
}

/// Invalid when there is no device or it may not be opened.
FileDescriptor openDevice(const std::filesystem::path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0 || major(facts.st_dev) == 0)
        return FileDescriptor();
    const auto device = "/dev/block/" + std::to_string(major(facts.st_dev)) + ":" +
                        std::to_string(minor(facts.st_dev));
    return FileDescriptor(::open(device.c_str(), O_RDONLY | O_CLOEXEC));
}

} // namespace

Drop drop(const std::filesystem::path& path) noexcept {
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
