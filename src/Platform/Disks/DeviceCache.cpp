#include "Platform/Disks/DeviceCache.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace slatewise::DeviceCache {

namespace {

bool isOutsideTheKernel(const std::filesystem::path& path) {
    struct statfs facts {};
    return ::statfs(path.c_str(), &facts) == 0 && facts.f_type == FUSE_SUPER_MAGIC;
}

/// Whether the device is a file whose content the system remembers as it does any file's: what is
/// read of the device then comes from there, and what wrote it may not be on a disk yet.
bool isFileInMemory(const std::filesystem::path& device) {
    constexpr std::string_view kLoop = "loop";
    auto name = device.filename().native();
    if (!name.starts_with(kLoop))
        return false;
    // A partition, "loop0p1", is one of the same file.
    name.erase(std::min(name.find('p', kLoop.size()), name.size()));
    try {
        const auto isDirect = FileSystem::read("/sys/block/" + name + "/loop/dio");
        return Text::trimmed(isDirect) == "0";
    } catch (const PosixError&) {
        return true;
    }
}

} // namespace

Drop drop(const std::filesystem::path& path) {
    const auto name = BlockDevices::pathUnder(path);
    if (isFileInMemory(name))
        return Drop::NotPossible;
    if (!isOutsideTheKernel(path))
        return Drop::NotNeeded;
    // Invalid when there is no device or it may not be opened.
    const FileDescriptor device(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    // Only what is written can be dropped.
    if (!device || ::fsync(device.get()) != 0 ||
        ::posix_fadvise(device.get(), 0, 0, POSIX_FADV_DONTNEED) != 0)
        return Drop::NotPossible;
    return Drop::Done;
}

} // namespace slatewise::DeviceCache
