#pragma once

#include "support/Daemon.h"
#include "support/PrivateBus.h"

#include <memory>
#include <string>
#include <vector>

namespace slatewise::test {

/// The system's real disk service, on a bus of its own, where it knows the machine's real devices.
/// One at a time on a machine: others wait for its end.
class DiskService {
public:
    /// Running, and knowing all devices.
    DiskService();
    ~DiskService();

    const std::string& address() const { return bus_.address(); }

    /// Takes questions and does not answer.
    void fallSilent() { service_->send("STOP"); }
    void speakAgain() { service_->send("CONT"); }

    void end();
    void start();

private:
    class Turn;

    std::unique_ptr<Turn> turn_;
    PrivateBus bus_;
    /// Tells the service of devices; a machine of containers may lack it.
    std::unique_ptr<Daemon> deviceManager_;
    std::unique_ptr<Daemon> service_;
};

/// A file that stands for a disk, and the device that carries it.
class LoopDisk {
public:
    /// Of 128 MiB, formatted by the command, to which the file is added.
    explicit LoopDisk(std::vector<std::string> format);
    ~LoopDisk();
    LoopDisk(const LoopDisk&) = delete;
    LoopDisk& operator=(const LoopDisk&) = delete;

    /// "loop3".
    std::string deviceName() const { return device_.filename(); }

    /// At a folder that is made if need be. All that is mounted is unmounted at the end.
    void mount(const std::filesystem::path& folder, const std::vector<std::string>& options = {});
    void unmount();

    /// Puts another disk in place of this one, which must not be mounted.
    void exchange(std::vector<std::string> format);

    /// Somebody else has done it.
    void wasUnmounted() { mountPoints_.clear(); }

private:
    /// Gives its path.
    std::string makeImage(std::vector<std::string> format);

    TemporaryFolder folder_;
    std::filesystem::path device_;
    std::vector<std::filesystem::path> mountPoints_;
};

} // namespace slatewise::test
