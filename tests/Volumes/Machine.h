#pragma once

#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/UDisksObjects.h"
#include "support/Files.h"

#include <map>
#include <string>

namespace slatewise::test {

/// A machine that exists on paper only: what its kernel tells in files, and what UDisks2 would tell
/// of the same disks.
class Machine {
public:
    using Attributes = std::map<std::string, std::string>;

    Machine();

    /// A device of the kernel: its numbers, and its folder below "/sys/devices". Attributes are
    /// files below that folder.
    void addDevice(const std::string& numbers, const std::string& folder,
                   const Attributes& attributes = {});

    /// `below` is the numbers of a device that another one is made of.
    void addSlave(const std::string& numbers, const std::string& below);

    /// What the kernel tells of devices on the way, such as a socket.
    void addAttribute(const std::string& folder, const std::string& name, const std::string& value);

    void addMount(const std::string& numbers, const std::string& root,
                  const std::filesystem::path& mountPoint, const std::string& fileSystem,
                  const std::string& source, const std::string& options = "rw");

    /// What the device manager has found out about a device.
    void addRecord(const std::string& numbers, const std::string& lines);

    /// An object of the service, by the last parts of its path: "block_devices/sdb1".
    UDisksObjects::Interfaces& object(const std::string& name);

    /// The properties of a block device with numbers and everything that all blocks have.
    QVariantMap& addBlock(const std::string& name, const std::string& numbers,
                          const std::string& drive = "");

    /// What makes a block a volume that the service has looked into, mounted at so many places.
    void addFilesystem(const std::string& block, const std::vector<std::string>& mountPoints);

    QVariantMap& addDrive(const std::string& name, const std::string& bus);

    /// A real folder, where a test may say that something is mounted.
    std::filesystem::path mountPoint() const { return folder_ / "VOLUME"; }

    static QDBusObjectPath path(const std::string& name);

    const UDisksObjects::Objects& objects() const { return objects_; }
    DiskSources sources() const;

private:
    TemporaryFolder folder_;
    std::string mountTable_;
    UDisksObjects::Objects objects_;
};

} // namespace slatewise::test
