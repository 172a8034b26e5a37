#include "Machine.h"

#include "Platform/Disks/BlockDevices.h"

#include <QByteArrayList>

namespace slatewise::test {

namespace {

/// As the service sends file names.
QByteArray fileName(const std::string& name) {
    return QByteArray(name.c_str(), static_cast<qsizetype>(name.size() + 1));
}

constexpr auto kBlock = "org.freedesktop.UDisks2.Block";

} // namespace

Machine::Machine() {
    std::filesystem::create_directories(folder_ / "sys/dev/block");
    std::filesystem::create_directories(folder_ / "sys/class/block");
    std::filesystem::create_directories(folder_ / "dev");
    std::filesystem::create_directory(mountPoint());
}

void Machine::addDevice(const std::string& numbers, const std::string& folder,
                        const Attributes& attributes) {
    const auto device = folder_ / "sys/devices" / folder;
    std::filesystem::create_directories(device);
    std::filesystem::create_symlink("../../devices/" + folder, folder_ / "sys/dev/block" / numbers);
    std::filesystem::create_directory_symlink("../../devices/" + folder,
                                              folder_ / "sys/class/block" / device.filename());
    writeFile(device / "dev", numbers + "\n");
    for (const auto& [name, value] : attributes)
        writeFile(device / name, value + "\n");
}

void Machine::addSlave(const std::string& numbers, const std::string& below) {
    const auto upper = std::filesystem::canonical(folder_ / "sys/dev/block" / numbers);
    const auto lower = std::filesystem::canonical(folder_ / "sys/dev/block" / below);
    std::filesystem::create_directories(upper / "slaves");
    std::filesystem::create_directory_symlink(lower, upper / "slaves" / lower.filename());
}

void Machine::addAttribute(const std::string& folder, const std::string& name,
                           const std::string& value) {
    writeFile(folder_ / "sys/devices" / folder / name, value + "\n");
}

void Machine::addMount(const std::string& numbers, const std::string& root,
                       const std::filesystem::path& mountPoint, const std::string& fileSystem,
                       const std::string& source, const std::string& options) {
    mountTable_ += "90 27 " + numbers + " " + root + " " + mountPoint.native() + " " + options +
                   ",nosuid shared:9 - " + fileSystem + " " + source + " rw\n";
    writeFile(folder_ / "mountinfo", mountTable_);
}

void Machine::addRecord(const std::string& numbers, const std::string& lines) {
    std::filesystem::create_directory(folder_ / "records");
    writeFile(folder_ / "records" / ("b" + numbers), lines);
}

QDBusObjectPath Machine::path(const std::string& name) {
    return QDBusObjectPath(
        name.empty() ? "/" : QString::fromStdString("/org/freedesktop/UDisks2/" + name));
}

UDisksObjects::Interfaces& Machine::object(const std::string& name) {
    return objects_[path(name)];
}

QVariantMap& Machine::addBlock(const std::string& name, const std::string& numbers,
                               const std::string& drive) {
    auto& block = object("block_devices/" + name)[kBlock];
    block["Device"] = fileName("/dev/" + name);
    block["DeviceNumber"] = qulonglong(*BlockDevices::parseNumbers(numbers));
    block["Size"] = qulonglong(64'000'000'000);
    block["ReadOnly"] = false;
    block["HintSystem"] = false;
    block["Drive"] = QVariant::fromValue(path(drive.empty() ? "" : "drives/" + drive));
    block["CryptoBackingDevice"] = QVariant::fromValue(path(""));
    return block;
}

void Machine::addFilesystem(const std::string& block, const std::vector<std::string>& mountPoints) {
    QByteArrayList names;
    for (const auto& mountPoint : mountPoints)
        names << fileName(mountPoint);
    object("block_devices/" + block)["org.freedesktop.UDisks2.Filesystem"]["MountPoints"] =
        QVariant::fromValue(names);
    object("block_devices/" + block)[kBlock]["IdUsage"] = "filesystem";
}

QVariantMap& Machine::addDrive(const std::string& name, const std::string& bus) {
    auto& drive = object("drives/" + name)["org.freedesktop.UDisks2.Drive"];
    drive["ConnectionBus"] = QString::fromStdString(bus);
    drive["Removable"] = !bus.empty();
    drive["MediaRemovable"] = false;
    drive["Ejectable"] = false;
    drive["CanPowerOff"] = bus == "usb";
    drive["Media"] = QString();
    drive["SiblingId"] = QString();
    return drive;
}

DiskSources Machine::sources() const {
    return {.busAddress = "unix:path=/nowhere",
            .mountTable = folder_ / "mountinfo",
            .sys = folder_ / "sys",
            .deviceRecords = folder_ / "records",
            .devices = folder_ / "dev"};
}

} // namespace slatewise::test
