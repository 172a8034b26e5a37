#include "Platform/Files/FolderIdentity.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <string_view>

namespace slatewise {

namespace {

// Younger than the headers we are built with.
struct FileSystemUUID {
    std::uint8_t length;
    std::array<std::uint8_t, 16> bytes;
};
constexpr unsigned long kGetFileSystemUUID = _IOR(0x15, 0, FileSystemUUID);
constexpr unsigned kMountIdOfAllTimes = 0x4000;

std::string nameOf(dev_t device) {
    return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

/// In lower-case hexadecimal digits; empty when the kernel does not say.
std::string askKernel(int descriptor) {
    // What is open for its name alone answers no such question.
    const FileDescriptor folder(::openat(descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FileSystemUUID uuid{};
    if (!folder || ::ioctl(folder.get(), kGetFileSystemUUID, &uuid) != 0)
        return {};
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (std::size_t at = 0; at < std::min<std::size_t>(uuid.length, uuid.bytes.size()); ++at) {
        text += kDigits[uuid.bytes[at] >> 4];
        text += kDigits[uuid.bytes[at] & 0x0f];
    }
    return text;
}

/// As the disk service found it when the device appeared, which is how FAT has one.
std::string askRecords(dev_t device) {
    constexpr std::string_view kKey = "E:ID_FS_UUID=";
    std::ifstream record("/run/udev/data/b" + nameOf(device));
    for (std::string line; std::getline(record, line);) {
        if (line.starts_with(kKey))
            return line.substr(kKey.size());
    }
    return {};
}

} // namespace

std::optional<FolderIdentity> FolderIdentity::of(int descriptor) noexcept {
    struct statx facts {};
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_INO | kMountIdOfAllTimes, &facts) != 0)
        return std::nullopt;
    // An older kernel knows the number that it will use again.
    if ((facts.stx_mask & kMountIdOfAllTimes) == 0 &&
        ::statx(descriptor, "", AT_EMPTY_PATH, STATX_INO | STATX_MNT_ID, &facts) != 0)
        return std::nullopt;
    FolderIdentity identity;
    identity.device = makedev(facts.stx_dev_major, facts.stx_dev_minor);
    identity.inode = facts.stx_ino;
    identity.mount = facts.stx_mnt_id;
    identity.fileSystem = askKernel(descriptor);
    if (identity.fileSystem.empty())
        identity.fileSystem = askRecords(identity.device);
    identity.medium = mediumIn(identity.device).value_or(0);
    return identity;
}

std::optional<FolderIdentity> FolderIdentity::at(const std::filesystem::path& path) noexcept {
    const FileDescriptor folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder ? of(folder.get()) : std::nullopt;
}

/// Of the device, or of the disk that it is a part of.
std::optional<std::uint64_t> FolderIdentity::mediumIn(dev_t device) noexcept {
    const auto folder = "/sys/dev/block/" + nameOf(device);
    for (const auto* place : {"/diskseq", "/../diskseq"}) {
        const FileDescriptor file(::open((folder + place).c_str(), O_RDONLY | O_CLOEXEC));
        if (!file && (errno == EMFILE || errno == ENFILE || errno == ENOMEM))
            return std::nullopt;
        std::array<char, 32> text{};
        std::uint64_t number = 0;
        const auto length = file ? ::read(file.get(), text.data(), text.size()) : 0;
        if (length > 0 &&
            std::from_chars(text.data(), text.data() + length, number).ec == std::errc())
            return number;
    }
    return 0;
}

bool FolderIdentity::isSame(const FolderIdentity& other) const noexcept {
    if (device != other.device || inode != other.inode)
        return false;
    if (medium != 0 && other.medium != 0 && medium != other.medium)
        return false;
    const bool areFileSystemsKnown = !fileSystem.empty() && !other.fileSystem.empty();
    return areFileSystemsKnown ? fileSystem == other.fileSystem : mount == other.mount;
}

} // namespace slatewise
