#include "Platform/Disks/FileSystemErrors.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/FileSystemType.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <fstream>
#include <thread>

namespace slatewise {

namespace {

std::optional<std::int64_t> numberIn(const std::filesystem::path& file) {
    std::int64_t number = 0;
    if (std::ifstream(file) >> number)
        return number;
    return std::nullopt;
}

bool isDeviceReadOnly(dev_t device) {
    return numberIn("/sys/dev/block/" + BlockDevices::text(device) + "/ro") == 1;
}

bool takesNoWrites(const std::filesystem::path& path) {
    struct statvfs facts {};
    return ::statvfs(path.c_str(), &facts) == 0 && (facts.f_flag & ST_RDONLY) != 0;
}

bool isAskedOfItsDevice(std::uint32_t fileSystem) {
    return fileSystem == MSDOS_SUPER_MAGIC || fileSystem == UDF_SUPER_MAGIC ||
           fileSystem == ISOFS_SUPER_MAGIC;
}

/// As the item itself tells: where files have numbers that stand for no device, nothing is counted.
/// 0 when it cannot be learnt.
dev_t deviceOf(const std::filesystem::path& path) {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0 ? facts.st_dev : 0;
}

} // namespace

FileSystemErrors::FileSystemErrors(const std::filesystem::path& path)
    : path_(path), wasReadOnly_(takesNoWrites(path)) {
    const auto fileSystem = FileSystemType::under(path);
    const auto device = deviceOf(path);
    if (isAskedOfItsDevice(fileSystem)) {
        device_.emplace(device);
        areNotCounted_ = !device_->areCounted();
    }
    // The number is that of ext2, ext3 and ext4 alike.
    if (fileSystem != EXT4_SUPER_MAGIC)
        return;
    counter_ = "/sys/fs/ext4" / BlockDevices::folderOf(device).filename() / "errors_count";
    const auto count = numberIn(counter_);
    before_ = count.value_or(0);
    areNotCounted_ = !count || isDeviceReadOnly(device);
}

bool FileSystemErrors::haveGrown(std::chrono::milliseconds patience) const {
    constexpr std::chrono::milliseconds kPause{10};
    if (!wasReadOnly_ && takesNoWrites(path_))
        return true;
    if (counter_.empty())
        return false;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (numberIn(counter_).value_or(0) <= before_) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

} // namespace slatewise
