#pragma once

#include <cstdint>
#include <filesystem>
#include <sys/types.h>
#include <vector>

namespace slatewise {

/// The commands that have failed on a device so far, by the kernel's count of each disk below it.
/// Kept for USB readers and other SCSI devices. Some failures are harmless, as of a command that
/// the device does not know.
class DeviceErrors {
public:
    /// As they are now. Never fails.
    explicit DeviceErrors(dev_t device, const std::filesystem::path& sys = "/sys");

    /// Whether the kernel counts them: a slot of its own does not, nor does an image file.
    bool areCounted() const;

    /// Whether there are more of them than there were.
    bool haveGrown() const;

private:
    std::int64_t count() const;

    std::vector<std::filesystem::path> counters_;
    std::int64_t before_;
};

} // namespace slatewise
