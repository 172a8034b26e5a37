#pragma once

#include "Platform/Disks/DeviceErrors.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace slatewise {

/// The errors that a file system has met so far, by its driver's own count. What lists a damaged
/// folder or reads a damaged record is not always told of it. Counted by ext2, ext3 and ext4. Of
/// FAT, UDF and ISO 9660, whose drivers pass over what the device cannot read, the device is asked.
/// Others tell whoever reads.
class FileSystemErrors {
public:
    /// Of the volume that holds `path`, as they are now. Never fails.
    explicit FileSystemErrors(const std::filesystem::path& path);

    /// Whether there are more of them than there were, or the driver takes no writes any more,
    /// which is how many answer damage. One that keeps a journal counts a moment after it has
    /// passed something over, which `patience` is for.
    bool haveGrown(std::chrono::milliseconds patience = {}) const;

    /// Whether damage would be passed over and counted nowhere: an ext driver counts nothing on a
    /// device that takes no writes, as behind the lock of a card or a write blocker, and not every
    /// reader counts what it could not read of a FAT card.
    bool areNotCounted() const noexcept { return areNotCounted_; }

    /// Whether the device, where it is asked, has met more errors than it had. It counts harmless
    /// refusals, too.
    bool hasDeviceMetErrors() const { return device_ && device_->haveGrown(); }

private:
    std::filesystem::path path_;
    bool wasReadOnly_;
    /// Empty where nothing counts.
    std::filesystem::path counter_;
    std::int64_t before_ = 0;
    bool areNotCounted_ = false;
    /// Where it is asked.
    std::optional<DeviceErrors> device_;
};

} // namespace slatewise
