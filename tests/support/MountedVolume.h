#pragma once

#include "support/Files.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace slatewise::test {

/// Whoever looks into it at that moment is waited for.
void unmountOnceFree(const std::filesystem::path& place);

/// A real file system in an image file, mounted over a loop device. Unmounted at the end of its
/// life. The test's user may write at its root.
class MountedVolume {
public:
    enum class FileSystem {
        Ext4,
        /// With small files among its own records.
        Ext4Inline,
        /// Without checksums of its own, so that damage may go unnoticed.
        Ext4Unchecked,
        Xfs,
        Btrfs,
        ExFat
    };

    MountedVolume(FileSystem fileSystem, std::int64_t sizeBytes,
                  const std::string& mountOptions = "");
    /// At a place of the test's choice, a folder that is made if need be; beside the image where
    /// none is given. The image lies in a new folder below `imageFolder`.
    MountedVolume(FileSystem fileSystem, std::int64_t sizeBytes,
                  const std::filesystem::path& mountPoint, const std::string& mountOptions,
                  const std::filesystem::path& imageFolder = scratchFolder());
    ~MountedVolume();
    MountedVolume(const MountedVolume&) = delete;
    MountedVolume& operator=(const MountedVolume&) = delete;

    const std::filesystem::path& path() const { return mountPoint_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return mountPoint_ / name;
    }

    /// The file that stands for the device.
    const std::filesystem::path& image() const { return image_; }

    /// Flips a bit wherever these bytes stand on the device, as a device does that wears out. Gives
    /// at how many places they do.
    int flipBitIn(std::string_view content) const;

    /// Takes the file system away from under whoever uses it, as a pulled card does: open files go
    /// on, but no path leads there any more.
    void pull();

    /// Of the program that is the file system, where it is one outside the kernel.
    std::string programID() const;

    /// SIGSTOP makes a disk that does not answer, SIGKILL a dead one.
    void signalItsProgram(int signal) const;

    /// Unmounts properly and mounts again.
    void remount();

    /// Locked: on a device that takes no writes, as behind the lock of a card or a write blocker.
    void mount(bool isLocked = false);
    void unmount();

    /// Lets nothing be written any more, as a file system does that has met damage.
    void turnReadOnly() const;

    /// Somebody else has done it.
    void wasUnmounted() { isMounted_ = false; }

private:
    TemporaryFolder folder_;
    FileSystem fileSystem_;
    std::string options_;
    std::filesystem::path image_;
    std::filesystem::path mountPoint_;
    bool isMounted_ = false;
};

/// A folder that is mounted in a second place, which is made if need be.
class BindMount {
public:
    BindMount(const std::filesystem::path& from, std::filesystem::path to);
    ~BindMount();
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;

    /// Somebody else has done it.
    void wasUnmounted() { isMounted_ = false; }

private:
    std::filesystem::path place_;
    bool isMounted_ = true;
};

} // namespace slatewise::test
