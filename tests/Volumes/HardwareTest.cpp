#include "Machine.h"
#include "MockUDisks.h"

#include "Platform/Disks/DiskInfo.h"
#include "Platform/Text.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeClassifier.h"

#include <gmock/gmock.h>

#include <QByteArrayList>
#include <QDBusObjectPath>

#include <chrono>
#include <functional>
#include <optional>

using namespace slatewise;
using namespace slatewise::test;

namespace {

/// Of every disk here, as the service tells it and as the kernel counts it in sectors.
constexpr std::int64_t kBytes = 64'000'000'000;
constexpr auto kPci = "pci0000:00/0000:00:14.0/";

/// A disk with one partition, mounted. `bus` is the service's word for what `folder` shows.
QVariantMap& addDisk(Machine& machine, const std::string& disk, const std::string& folder,
                     const std::string& bus, const std::string& fileSystem,
                     const std::string& options = "rw") {
    machine.addDevice("8:16", folder + "/block/" + disk, {{"removable", "0"}, {"size", "1000"}});
    machine.addDevice("8:17", folder + "/block/" + disk + "/" + disk + "1",
                      {{"partition", "1"}, {"size", "125000000"}, {"ro", "0"}});
    machine.addMount("8:17", "/", machine.mountPoint(), fileSystem, "/dev/" + disk + "1", options);
    machine.addDrive("Disk", bus);
    machine.addBlock(disk, "8:16", "Disk");
    auto& partition = machine.addBlock(disk + "1", "8:17", "Disk");
    machine.addFilesystem(disk + "1", {machine.mountPoint()});
    return partition;
}

QVariantMap& drive(Machine& machine) {
    return machine.object("drives/Disk")["org.freedesktop.UDisks2.Drive"];
}

/// What the service says of a block device.
QVariantMap& block(Machine& machine, const std::string& name) {
    return machine.object("block_devices/" + name)["org.freedesktop.UDisks2.Block"];
}

const std::string kUsb = std::string(kPci) + "usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0";

/// A reader on USB with a card of that file system in it.
void readerWith(Machine& machine, const std::string& fileSystem) {
    addDisk(machine, "sdb", kUsb, "usb", fileSystem);
    machine.addAttribute(kUsb + "/block/sdb", "removable", "1");
    drive(machine)["MediaRemovable"] = true;
    drive(machine)["Ejectable"] = true;
}

void slot(Machine& machine, const std::string& type, const std::string& media) {
    addDisk(machine, "mmcblk0", std::string(kPci) + "mmc_host/mmc0/mmc0:aaaa", "sdio", "exfat");
    machine.addAttribute(std::string(kPci) + "mmc_host/mmc0/mmc0:aaaa/block/mmcblk0", "device/type",
                         type);
    drive(machine)["Media"] = QString::fromStdString(media);
}

void inside(Machine& machine, const std::string& disk, const std::string& folder) {
    addDisk(machine, disk, std::string(kPci) + folder, "", "ext4")["HintSystem"] = true;
}

void encrypted(Machine& machine) {
    machine.addDrive("Disk", "usb");
    machine.addDevice("8:33", kUsb + "/block/sdc/sdc1", {{"partition", "1"}});
    machine.addDevice("253:0", "virtual/block/dm-0", {{"size", "125000000"}});
    machine.addSlave("253:0", "8:33");
    machine.addMount("253:0", "/", machine.mountPoint(), "ext4", "/dev/mapper/luks-1234");
    machine.addBlock("sdc1", "8:33", "Disk");
    auto& opened = machine.addBlock("dm_2d0", "253:0");
    opened["Device"] = QByteArray("/dev/dm-0");
    opened["HintSystem"] = true;
    opened["CryptoBackingDevice"] = QVariant::fromValue(Machine::path("block_devices/sdc1"));
    machine.addFilesystem("dm_2d0", {machine.mountPoint()});
}

void array(Machine& machine) {
    machine.addDevice("8:33", kUsb + "/block/sdc/sdc1", {{"partition", "1"}});
    machine.addDevice("9:127", "virtual/block/md127", {{"size", "125000000"}});
    machine.addSlave("9:127", "8:33");
    machine.addMount("9:127", "/", machine.mountPoint(), "xfs", "/dev/md127");
    machine.addBlock("md127", "9:127")["HintSystem"] = true;
    machine.addFilesystem("md127", {machine.mountPoint()});
}

void outerNvme(Machine& machine) {
    inside(machine, "nvme1n1", "0000:04:00.0/nvme/nvme1");
    machine.addAttribute(std::string(kPci) + "0000:04:00.0", "removable", "removable");
}

void share(Machine& machine, const std::string& fileSystem, const std::string& source) {
    machine.addMount("0:50", "/", machine.mountPoint(), fileSystem, source);
}

/// What people plug in, as kernel and service describe it.
struct Shape {
    const char* name;
    std::function<void(Machine&)> build;
    /// Identifier, file system, protocol, place and verdict.
    const char* facts;
    /// The verdict where the kernel alone cannot know as much as the service.
    std::optional<VolumeKind> kindWithoutService = std::nullopt;
};

/// On USB, as `change` makes it different from others.
Shape usbDisk(const char* name, const char* fileSystem, const std::function<void(Machine&)>& change,
              const char* facts) {
    return {name,
            [=](Machine& machine) {
                addDisk(machine, "sdb", kUsb, "usb", fileSystem);
                change(machine);
            },
            facts};
}

void asItIs(Machine&) {}

void notRemovable(Machine& machine) {
    drive(machine)["Removable"] = false;
}

void locked(Machine& machine) {
    block(machine, "sdb1")["ReadOnly"] = true;
    machine.addAttribute(kUsb + "/block/sdb/sdb1", "ro", "1");
}

void fireWire(Machine& machine) {
    addDisk(machine, "sdb", std::string(kPci) + "fw1/fw1.0/host6/target6:0:0/6:0:0:0", "ieee1394",
            "hfsplus");
}

void sata(Machine& machine) {
    inside(machine, "sda", "ata1/host0/target0:0:0/0:0:0:0");
}

void openSata(Machine& machine) {
    sata(machine);
    block(machine, "sda1")["HintSystem"] = false;
}

using M = Machine;

// clang-format off
const std::vector<Shape> kShapes = {
    {"CardReaderExFat", [](M& m) { readerWith(m, "exfat"); }, "sdb1|ExFAT|USB|removable external|cameraCard"},
    {"CardReaderFat", [](M& m) { readerWith(m, "vfat"); }, "sdb1|MS-DOS FAT32|USB|removable external|cameraCard"},
    {"CardReaderFat16", [](M& m) { readerWith(m, "vfat"); block(m, "sdb1")["IdVersion"] = QString("FAT16"); m.addRecord("8:17", "E:ID_FS_VERSION=FAT16\n"); }, "sdb1|MS-DOS FAT16|USB|removable external|cameraCard"},
    {"CardReaderUdf", [](M& m) { readerWith(m, "udf"); }, "sdb1|UDF|USB|removable external|cameraCard"},
    {"CardSlot", [](M& m) { slot(m, "SD", "flash_sd"); }, "mmcblk01|ExFAT|Secure Digital|removable|cameraCard"},
    {"ChipOnTheBoard", [](M& m) { slot(m, "MMC", "flash_mmc"); }, "mmcblk01|ExFAT|Secure Digital|internal|system"},
    usbDisk("UsbSsd", "ext4", asItIs, "sdb1||USB|removable external|destination"),
    usbDisk("UsbHardDiskThatIsNotRemovable", "hfsplus", notRemovable, "sdb1|HFS+|USB|external|destination"),
    usbDisk("UsbDiskThatIsLocked", "ext4", locked, "sdb1||USB|removable external|unknown"),
    {"UsbDiskMountedReadOnly", [](M& m) { addDisk(m, "sdb", kUsb, "usb", "ext4", "ro"); }, "sdb1||USB|removable external|unknown"},
    {"FireWireDisk", fireWire, "sdb1|HFS+|FireWire|removable external|destination"},
    {"ThunderboltSsd", outerNvme, "nvme1n11||Thunderbolt|external|destination"},
    {"NvmeSystemDisk", [](M& m) { inside(m, "nvme0n1", "0000:03:00.0/nvme/nvme0"); }, "nvme0n11||PCI-Express|internal|system"},
    {"SataDataDisk", sata, "sda1||SATA|internal|system"},
    {"SataBayThatSomebodyDeclaredOpen", openSata, "sda1||SATA|external|destination", VolumeKind::System},
    {"SasDisk", [](M& m) { inside(m, "sdc", "host3/port-3:0/end_device-3:0/target3:0:0/3:0:0:0"); }, "sdc1|||internal|system"},
    {"EncryptedUsbDisk", encrypted, "dm-0||USB|removable external|destination"},
    {"ArrayOfUsbDisks", array, "md127||USB|external|destination"},
    {"WindowsShare", [](M& m) { share(m, "cifs", "//server/footage"); }, "||||unknown"},
    {"NfsShare", [](M& m) { share(m, "nfs4", "server:/export/footage"); }, "||||unknown"},
};
// clang-format on

std::string described(const VolumeFacts& facts, VolumeKind kind) {
    std::string place;
    for (const auto& [is, word] :
         {std::pair(facts.isInternal, "internal"), std::pair(facts.isRemovable, "removable"),
          std::pair(facts.isExternal, "external")}) {
        if (is)
            place += (place.empty() ? "" : " ") + std::string(word);
    }
    return facts.deviceIdentifier + "|" + facts.fileSystem + "|" + facts.protocolName + "|" +
           place + "|" + std::string(rawValue(kind));
}

/// A share has no device: its size is what its file system says.
std::int64_t sizeOf(const VolumeFacts& facts, const Machine& machine) {
    return facts.deviceIdentifier.empty()
               ? static_cast<std::int64_t>(std::filesystem::space(machine.mountPoint()).capacity)
               : kBytes;
}

} // namespace

TEST(Hardware, IsWhatTheServiceSays) {
    for (const auto& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        Machine machine;
        shape.build(machine);
        const MockUDisks service(machine.objects());
        auto sources = machine.sources();
        sources.busAddress = service.address();
        const auto facts = DiskUtilClient::facts(machine.mountPoint(), sources);
        EXPECT_EQ(service.timesAskedForObjects(), 1);
        EXPECT_EQ(described(facts, VolumeClassifier::classify(facts).kind), shape.facts);
        EXPECT_EQ(facts.totalBytes, sizeOf(facts, machine));
    }
}

TEST(Hardware, IsTheSameWithoutTheService) {
    for (const auto& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        Machine machine;
        shape.build(machine);
        const auto facts = DiskUtilClient::facts(machine.mountPoint(), machine.sources());
        EXPECT_EQ(facts.totalBytes, sizeOf(facts, machine));
        // The kernel tells what is connected how; which of it is made to be taken out it does not.
        const auto fields = Text::pieces(shape.facts, '|');
        EXPECT_THAT(shape.facts,
                    testing::StartsWith(facts.deviceIdentifier + "|" + facts.fileSystem + "|" +
                                        facts.protocolName + "|"));
        const auto kind = rawValue(VolumeClassifier::classify(facts).kind);
        if (shape.kindWithoutService)
            EXPECT_EQ(kind, rawValue(*shape.kindWithoutService));
        else
            EXPECT_EQ(kind, fields.back());
    }
}

TEST(DiskService, IsNotBelievedWhileItIsBehindEvents) {
    struct Case {
        const char* what;
        std::function<void(Machine&)> change;
        bool isAwaited;
        /// What counts in the end.
        const char* name;
    };
    const Case cases[] = {
        {"as it should be", [](Machine&) {}, false, "A"},
        {"not looked into",
         [](Machine& machine) {
             block(machine, "sdb1")["IdUsage"] = block(machine, "sdb1")["IdLabel"] = "";
         },
         true, "VOLUME"},
        {"mounted elsewhere",
         [](Machine& machine) { machine.addFilesystem("sdb1", {"/media/me/OLD"}); }, true, "A"},
        {"another medium",
         [](Machine& machine) {
             block(machine, "sdb")["Symlinks"] =
                 QVariant::fromValue(QByteArrayList{"/dev/disk/by-diskseq/6"});
         },
         true, "B"},
    };
    for (const auto& [what, change, isAwaited, name] : cases) {
        SCOPED_TRACE(what);
        Machine machine;
        readerWith(machine, "exfat");
        machine.addAttribute(kUsb + "/block/sdb", "diskseq", "7");
        machine.addRecord("8:17", "E:ID_FS_LABEL_ENC=B\\x20\nE:ID_FS_UUID_ENC=B-1\n");
        auto& partition = block(machine, "sdb1");
        partition["IdLabel"] = QString("A");
        machine.object("block_devices/sdb1")["org.freedesktop.UDisks2.Partition"]["Table"] =
            QVariant::fromValue(Machine::path("block_devices/sdb"));
        change(machine);
        const MockUDisks service(machine.objects());
        auto sources = machine.sources();
        sources.busAddress = service.address();
        DiskMemory memory;
        DiskInfo disks(sources, memory);
        const auto& mount = *disks.mountAt(machine.mountPoint());
        const auto nameNow = [&] {
            return DiskUtilClient::factsFrom(machine.mountPoint(), &mount, disks.facts(mount))
                .volumeName;
        };
        EXPECT_EQ(disks.isAwaited(mount), isAwaited);
        EXPECT_EQ(nameNow(), isAwaited ? "B" : "A");
        disks.giveUp(mount, memory);
        EXPECT_EQ(nameNow(), name);
    }
}
