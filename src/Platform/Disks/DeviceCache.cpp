#include "Platform/Disks/DeviceCache.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Files/FileDescriptor.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace slatewise::DeviceCache {

namespace {

bool isOutsideTheKernel(const std::filesystem::path& path) {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 && facts.f_type == FUSE_SUPER_MAGIC;
}

/// Invalid when there is no device or it may not be opened.
FileDescriptor openDevice(const std::filesystem::path& path) {
    return FileDescriptor(::open(BlockDevices::pathUnder(path).c_str(), O_RDONLY | O_CLOEXEC));
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
