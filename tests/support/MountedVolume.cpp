#include "support/MountedVolume.h"

#include "support/Process.h"
#include "support/Waiting.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace slatewise::test {

namespace {

std::vector<std::string> formatCommand(MountedVolume::FileSystem fileSystem) {
    switch (fileSystem) {
    case MountedVolume::FileSystem::Ext4:
        return {"mkfs.ext4", "-q", "-F", "-m", "0"};
    case MountedVolume::FileSystem::Ext4Inline:
        return {"mkfs.ext4", "-q", "-F", "-O", "inline_data"};
    case MountedVolume::FileSystem::Ext4Unchecked:
        return {"mkfs.ext4", "-q", "-F", "-m", "0", "-O", "^metadata_csum,^has_journal"};
    case MountedVolume::FileSystem::Xfs:
        return {"mkfs.xfs", "-q", "-f"};
    case MountedVolume::FileSystem::Btrfs:
        return {"mkfs.btrfs", "-q", "-f"};
    case MountedVolume::FileSystem::ExFat:
        break;
    }
    return {"mkfs.exfat"};
}

void makeImage(const std::filesystem::path& image, std::int64_t sizeBytes) {
    const int file = ::open(image.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ::ftruncate(file, sizeBytes) != 0)
        throw std::runtime_error("no image " + image.native());
    ::close(file);
}

} // namespace

void unmountOnceFree(const std::filesystem::path& place) {
    std::string refusal;
    waitUntil([&] {
        refusal.clear();
        try {
            runPrivileged({"umount", place.native()});
        } catch (const std::runtime_error& failure) {
            refusal = failure.what();
        }
        return refusal.find("busy") == std::string::npos;
    });
    if (!refusal.empty())
        throw std::runtime_error(refusal);
}

MountedVolume::MountedVolume(FileSystem fileSystem, std::int64_t sizeBytes,
                             const std::string& mountOptions)
    : MountedVolume(fileSystem, sizeBytes, {}, mountOptions) {}

MountedVolume::MountedVolume(FileSystem fileSystem, std::int64_t sizeBytes,
                             const std::filesystem::path& mountPoint,
                             const std::string& mountOptions,
                             const std::filesystem::path& imageFolder)
    : folder_(imageFolder), fileSystem_(fileSystem), options_(mountOptions),
      image_(folder_ / "volume.img"),
      mountPoint_(mountPoint.empty() ? folder_ / "volume" : mountPoint) {
    makeImage(image_, sizeBytes);
    auto format = formatCommand(fileSystem_);
    format.push_back(image_.native());
    runPrivileged(format);
    std::filesystem::create_directory(mountPoint_);
    mount();
    const auto owner = std::to_string(::geteuid()) + ":" + std::to_string(::getegid());
    if (fileSystem_ == FileSystem::ExFat)
        return;
    runPrivileged({"chown", owner, mountPoint_.native()});
    // Root's own, and unreadable for the test's user.
    if (std::filesystem::exists(mountPoint_ / "lost+found"))
        runPrivileged({"rmdir", mountPoint_ / "lost+found"});
}

MountedVolume::~MountedVolume() {
    try {
        if (isMounted_)
            pull();
    } catch (const std::exception& failure) {
        std::cerr << "volume left mounted: " << failure.what() << "\n";
    }
}

int MountedVolume::flipBitIn(std::string_view content) const {
    const FileDescriptor image(::open(image_.c_str(), O_RDWR | O_CLOEXEC));
    // Most of a device was never written. Nothing stands across such a gap: it is zeros, a whole
    // block at least.
    int places = 0;
    std::string written;
    for (off_t end = 0;;) {
        const auto begin = ::lseek(image.get(), end, SEEK_DATA);
        if (begin < 0 && errno == ENXIO)
            return places;
        end = begin < 0 ? begin : ::lseek(image.get(), begin, SEEK_HOLE);
        if (end < 0)
            throw std::runtime_error("not looked through: " + image_.native());
        written.resize(static_cast<std::size_t>(end - begin));
        if (::pread(image.get(), written.data(), written.size(), begin) != end - begin)
            throw std::runtime_error("not read: " + image_.native());
        for (auto at = written.find(content); at != std::string::npos;
             at = written.find(content, at + content.size())) {
            const auto flipped = static_cast<char>(written[at] ^ 1);
            if (::pwrite(image.get(), &flipped, 1, begin + static_cast<off_t>(at)) != 1)
                throw std::runtime_error("not written: " + image_.native());
            ++places;
        }
    }
}

std::string MountedVolume::programID() const {
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(process.path() / "cmdline");
        const std::string words{std::istreambuf_iterator<char>(file), {}};
        if (words.find("exfat") != std::string::npos &&
            words.find(mountPoint_.native()) != std::string::npos)
            return process.path().filename();
    }
    throw std::runtime_error("no program for " + mountPoint_.native());
}

void MountedVolume::pull() {
    runPrivileged({"umount", "--lazy", mountPoint_.native()});
    isMounted_ = false;
}

void MountedVolume::signalItsProgram(int signal) const {
    runPrivileged({"kill", "-" + std::to_string(signal), programID()});
}

void MountedVolume::remount() {
    unmount();
    mount();
}

void MountedVolume::mount(bool isLocked) {
    std::string options = isLocked ? "loop,ro" : "loop";
    if (!options_.empty())
        options += "," + options_;
    if (fileSystem_ == FileSystem::ExFat) {
        options += ",uid=" + std::to_string(::geteuid()) + ",gid=" + std::to_string(::getegid());
        runPrivileged(
            {"mount", "-t", "exfat-fuse", "-o", options, image_.native(), mountPoint_.native()});
    } else {
        runPrivileged({"mount", "-o", options, image_.native(), mountPoint_.native()});
    }
    isMounted_ = true;
    // A disk is none of the files that the system remembers. One in memory is nothing else, and not
    // every kernel can do without that memory there.
    if (!image_.native().starts_with(scratchFolderInMemory().native()))
        runPrivileged({"losetup", "--direct-io=on", BlockDevices::pathUnder(mountPoint_)});
}

void MountedVolume::turnReadOnly() const {
    runPrivileged({"mount", "-o", "remount,ro", mountPoint_.native()});
}

void MountedVolume::unmount() {
    unmountOnceFree(mountPoint_);
    isMounted_ = false;
}

BindMount::BindMount(const std::filesystem::path& from, std::filesystem::path to)
    : place_(std::move(to)) {
    std::filesystem::create_directories(place_);
    runPrivileged({"mount", "--bind", from.native(), place_.native()});
}

BindMount::~BindMount() {
    try {
        if (isMounted_)
            runPrivileged({"umount", place_.native()});
    } catch (const std::exception& failure) {
        std::cerr << "folder left mounted: " << failure.what() << "\n";
    }
}

} // namespace slatewise::test
