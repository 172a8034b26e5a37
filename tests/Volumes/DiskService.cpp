#include "DiskService.h"

#include "Platform/Disks/UDisksClient.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace slatewise::test {

namespace {

void expect(const char* what, const std::function<bool()>& condition) {
    if (!waitUntil(condition, std::chrono::seconds(20)))
        throw std::runtime_error(what);
}

constexpr auto* kService = "/usr/libexec/udisks2/udisksd";

/// Goes on with what else is to be undone when this fails.
void undo(const std::vector<std::string>& words) {
    try {
        runPrivileged(words);
    } catch (const std::exception& failure) {
        std::cerr << "disk left: " << failure.what() << "\n";
    }
}

void settleDevices() {
    runPrivileged({"udevadm", "settle", "--timeout=20"});
}

} // namespace

class DiskService::Turn {
public:
    /// Whoever runs tests can open this one.
    Turn() : lock_(::open(kService, O_RDONLY | O_CLOEXEC)) {
        if (::flock(lock_.get(), LOCK_EX) != 0)
            throw std::runtime_error("no turn");
    }

private:
    FileDescriptor lock_;
};

DiskService::DiskService() : turn_(std::make_unique<Turn>()) {
    const auto isManaged = [] {
        return run({"timeout", "5", "udevadm", "control", "--ping"}).exitCode == 0;
    };
    if (!isManaged()) {
        deviceManager_ = std::make_unique<Daemon>(
            std::vector<std::string>{"/lib/systemd/systemd-udevd"}, Daemon::Owner::Root);
        expect("no device manager", isManaged);
        runPrivileged({"udevadm", "trigger", "--subsystem-match=block"});
        settleDevices();
    }
    start();
}

DiskService::~DiskService() = default;

void DiskService::end() {
    service_.reset();
}

void DiskService::start() {
    service_ = std::make_unique<Daemon>(
        std::vector<std::string>{"env", "DBUS_SYSTEM_BUS_ADDRESS=" + bus_.address(), kService},
        Daemon::Owner::Root);
    expect("no disk service", [&] { return UDisksClient(bus_.address()).objects().has_value(); });
}

LoopDisk::LoopDisk(std::vector<std::string> format)
    : device_(Text::trimmed(
          runPrivileged({"losetup", "--find", "--show", makeImage(std::move(format))}))) {
    settleDevices();
}

LoopDisk::~LoopDisk() {
    for (const auto& folder : mountPoints_)
        undo({"umount", "--lazy", folder.native()});
    if (!device_.empty())
        undo({"losetup", "--detach", device_.native()});
}

void LoopDisk::mount(const std::filesystem::path& folder, const std::vector<std::string>& options) {
    std::filesystem::create_directories(folder);
    std::vector<std::string> words = {"mount"};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), {device_.native(), folder.native()});
    runPrivileged(words);
    mountPoints_.push_back(folder);
}

void LoopDisk::exchange(std::vector<std::string> format) {
    // Hardly a moment in which a test beside this one could take the slot.
    const auto image = makeImage(std::move(format));
    // Should one do so, the device is its own.
    const auto device = std::exchange(device_, {});
    runPrivileged({"sh", "-c", "losetup --detach \"$0\" && losetup \"$0\" \"$1\"", device, image});
    device_ = device;
    settleDevices();
}

std::string LoopDisk::makeImage(std::vector<std::string> format) {
    auto image = (folder_ / (format.back() + ".img")).native();
    runPrivileged({"truncate", "-s", "128M", image});
    format.push_back(image);
    runPrivileged(format);
    return image;
}

void LoopDisk::unmount() {
    for (const auto& folder : mountPoints_)
        runPrivileged({"umount", folder.native()});
    mountPoints_.clear();
}

} // namespace slatewise::test
