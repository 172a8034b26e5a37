#include "HardwareShapes.h"

#include <QDBusObjectPath>

namespace slatewise::test {

namespace {

constexpr auto kPci = "pci0000:00/0000:00:14.0/";

constexpr auto kCard = VolumeKind::CameraCard;
constexpr auto kDestination = VolumeKind::Destination;
constexpr auto kSystem = VolumeKind::System;
constexpr auto kUnknown = VolumeKind::Unknown;

/// A disk with one partition, mounted. `bus` is the service's word for what `folder` shows.
QVariantMap& addDisk(Machine& machine, const std::string& disk, const std::string& folder,
                     const std::string& bus, const std::string& fileSystem,
                     const std::string& options = "rw") {
    machine.addDevice("8:16", folder + "/block/" + disk, {{"removable", "0"}, {"size", "1000"}});
    machine.addDevice("8:17", folder + "/block/" + disk + "/" + disk + "1",
                      {{"partition", "1"}, {"size", "125000000"}, {"ro", "0"}});
    machine.addMount("8:17", "/", kMountPoint, fileSystem, "/dev/" + disk + "1", options);
    machine.addDrive("Disk", bus);
    machine.addBlock(disk, "8:16", "Disk");
    auto& partition = machine.addBlock(disk + "1", "8:17", "Disk");
    machine.addFilesystem(disk + "1", {kMountPoint});
    return partition;
}

QVariantMap& drive(Machine& machine) {
    return machine.object("drives/Disk")["org.freedesktop.UDisks2.Drive"];
}

const std::string kUsb = std::string(kPci) + "usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0";

void slot(Machine& machine, const std::string& type, const std::string& media) {
    addDisk(machine, "mmcblk0", std::string(kPci) + "mmc_host/mmc0/mmc0:aaaa", "sdio", "exfat");
    machine.addAttribute(std::string(kPci) + "mmc_host/mmc0/mmc0:aaaa/block/mmcblk0", "device/type",
                         type);
    drive(machine)["Media"] = QString::fromStdString(media);
}

void inside(Machine& machine, const std::string& disk, const std::string& folder) {
    addDisk(machine, disk, std::string(kPci) + folder, "", "ext4")["HintSystem"] = true;
}

void image(Machine& machine, const std::string& fileSystem) {
    machine.addDevice("7:3", "virtual/block/loop3", {{"removable", "0"}, {"size", "125000000"}});
    machine.addMount("7:3", "/", kMountPoint, fileSystem, "/dev/loop3");
    auto& loop = machine.addBlock("loop3", "7:3");
    loop["IdType"] = "exfat";
    loop["HintSystem"] = true;
    machine.object("block_devices/loop3")["org.freedesktop.UDisks2.Loop"]["Autoclear"] = true;
    machine.addFilesystem("loop3", {kMountPoint});
}

void partitionOfImage(Machine& machine) {
    machine.addDevice("7:3", "virtual/block/loop3", {{"size", "126000000"}});
    machine.addDevice("259:0", "virtual/block/loop3/loop3p1",
                      {{"partition", "1"}, {"size", "125000000"}});
    machine.addMount("259:0", "/", kMountPoint, "ext4", "/dev/loop3p1");
    machine.addBlock("loop3", "7:3");
    machine.object("block_devices/loop3")["org.freedesktop.UDisks2.Loop"]["Autoclear"] = true;
    machine.addBlock("loop3p1", "259:0");
    machine.object("block_devices/loop3p1")["org.freedesktop.UDisks2.Partition"]["Table"] =
        QVariant::fromValue(Machine::path("block_devices/loop3"));
    machine.addFilesystem("loop3p1", {kMountPoint});
}

void encrypted(Machine& machine) {
    machine.addDrive("Disk", "usb");
    machine.addDevice("8:33", kUsb + "/block/sdc/sdc1", {{"partition", "1"}});
    machine.addDevice("253:0", "virtual/block/dm-0", {{"size", "125000000"}});
    machine.addSlave("253:0", "8:33");
    machine.addMount("253:0", "/", kMountPoint, "ext4", "/dev/mapper/luks-1234");
    machine.addBlock("sdc1", "8:33", "Disk");
    auto& opened = machine.addBlock("dm_2d0", "253:0");
    opened["Device"] = QByteArray("/dev/dm-0");
    opened["HintSystem"] = true;
    opened["CryptoBackingDevice"] = QVariant::fromValue(Machine::path("block_devices/sdc1"));
    machine.addFilesystem("dm_2d0", {kMountPoint});
}

void array(Machine& machine) {
    machine.addDevice("8:33", kUsb + "/block/sdc/sdc1", {{"partition", "1"}});
    machine.addDevice("9:127", "virtual/block/md127", {{"size", "125000000"}});
    machine.addSlave("9:127", "8:33");
    machine.addMount("9:127", "/", kMountPoint, "xfs", "/dev/md127");
    machine.addBlock("md127", "9:127")["HintSystem"] = true;
    machine.addFilesystem("md127", {kMountPoint});
}

void subvolume(Machine& machine) {
    addDisk(machine, "sdb", kUsb, "usb", "exfat");
    machine.addMount("0:45", "/@footage", kMountPoint, "btrfs", "/dev/sdb1");
}

void outerNvme(Machine& machine) {
    inside(machine, "nvme1n1", "0000:04:00.0/nvme/nvme1");
    machine.addAttribute(std::string(kPci) + "0000:04:00.0", "removable", "removable");
}

const std::vector<Shape> kShapes = {
    {"CardReaderExFat",
     [](Machine& machine) { readerWith(machine, "exfat"); },
     "sdb1",
     "ExFAT",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kCard},
    {"CardReaderFat",
     [](Machine& machine) { readerWith(machine, "vfat"); },
     "sdb1",
     "MS-DOS FAT32",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kCard},
    {"CardReaderUdf",
     [](Machine& machine) { readerWith(machine, "udf"); },
     "sdb1",
     "UDF",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kCard},
    {"CardSlot",
     [](Machine& machine) { slot(machine, "SD", "flash_sd"); },
     "mmcblk01",
     "ExFAT",
     "Secure Digital",
     {.isRemovable = true},
     kCard},
    {"ChipOnTheBoard",
     [](Machine& machine) { slot(machine, "MMC", "flash_mmc"); },
     "mmcblk01",
     "ExFAT",
     "Secure Digital",
     {.isInternal = true},
     kSystem},
    {"UsbSsd",
     [](Machine& machine) { addDisk(machine, "sdb", kUsb, "usb", "ext4"); },
     "sdb1",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"UsbHardDiskThatIsNotRemovable",
     [](Machine& machine) {
         addDisk(machine, "sdb", kUsb, "usb", "hfsplus");
         drive(machine)["Removable"] = false;
     },
     "sdb1",
     "HFS+",
     "USB",
     {.isExternal = true},
     kDestination},
    {"UsbDiskMountedReadOnly",
     [](Machine& machine) { addDisk(machine, "sdb", kUsb, "usb", "ext4", "ro"); },
     "sdb1",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kUnknown},
    {"UsbDiskThatIsLocked",
     [](Machine& machine) {
         addDisk(machine, "sdb", kUsb, "usb", "ext4")["ReadOnly"] = true;
         machine.addAttribute(kUsb + "/block/sdb/sdb1", "ro", "1");
     },
     "sdb1",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kUnknown},
    {"NtfsOutsideTheKernel",
     [](Machine& machine) { addDisk(machine, "sdb", kUsb, "usb", "fuseblk")["IdType"] = "ntfs"; },
     "sdb1",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"ExFatOutsideTheKernel",
     [](Machine& machine) { addDisk(machine, "sdb", kUsb, "usb", "fuseblk")["IdType"] = "exfat"; },
     "sdb1",
     "ExFAT",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kCard,
     kDestination},
    {"FireWireDisk",
     [](Machine& machine) {
         addDisk(machine, "sdb", std::string(kPci) + "fw1/fw1.0/host6/target6:0:0/6:0:0:0",
                 "ieee1394", "hfsplus");
     },
     "sdb1",
     "HFS+",
     "FireWire",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"ThunderboltSsd",
     outerNvme,
     "nvme1n11",
     "",
     "Thunderbolt",
     {.isExternal = true},
     kDestination},
    {"NvmeSystemDisk",
     [](Machine& machine) { inside(machine, "nvme0n1", "0000:03:00.0/nvme/nvme0"); },
     "nvme0n11",
     "",
     "PCI-Express",
     {.isInternal = true},
     kSystem},
    {"SataDataDisk",
     [](Machine& machine) { inside(machine, "sda", "ata1/host0/target0:0:0/0:0:0:0"); },
     "sda1",
     "",
     "SATA",
     {.isInternal = true},
     kSystem},
    {"SataBayThatSomebodyDeclaredOpen",
     [](Machine& machine) {
         inside(machine, "sda", "ata1/host0/target0:0:0/0:0:0:0");
         block(machine, "sda1")["HintSystem"] = false;
     },
     "sda1",
     "",
     "SATA",
     {.isExternal = true},
     kDestination,
     kSystem},
    {"VirtualDisk",
     [](Machine& machine) { inside(machine, "vda", "virtio1"); },
     "vda1",
     "",
     "",
     {.isInternal = true},
     kSystem},
    {"LoopImage",
     [](Machine& machine) { image(machine, "exfat"); },
     "loop3",
     "ExFAT",
     "Disk Image",
     {.isRemovable = true, .isExternal = true},
     kCard},
    {"LoopImageThroughFuse",
     [](Machine& machine) { image(machine, "fuseblk"); },
     "loop3",
     "ExFAT",
     "Disk Image",
     {.isRemovable = true, .isExternal = true},
     kCard,
     kDestination},
    {"PartitionOfALoopImage",
     partitionOfImage,
     "loop3p1",
     "",
     "Disk Image",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"EncryptedUsbDisk",
     encrypted,
     "dm-0",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"ArrayOfUsbDisks", array, "md127", "", "USB", {.isExternal = true}, kDestination},
    {"BtrfsSubvolume",
     subvolume,
     "sdb1[/@footage]",
     "",
     "USB",
     {.isRemovable = true, .isExternal = true},
     kDestination},
    {"WindowsShare",
     [](Machine& machine) {
         machine.addMount("0:50", "/", kMountPoint, "cifs", "//server/footage");
     },
     "",
     "",
     "",
     {},
     kUnknown},
    {"NfsShare",
     [](Machine& machine) {
         machine.addMount("0:51", "/", kMountPoint, "nfs4", "server:/export/footage");
     },
     "",
     "",
     "",
     {},
     kUnknown},
};

} // namespace

const std::vector<Shape>& hardwareShapes() {
    return kShapes;
}

void readerWith(Machine& machine, const std::string& fileSystem) {
    addDisk(machine, "sdb", kUsb, "usb", fileSystem);
    machine.addAttribute(kUsb + "/block/sdb", "removable", "1");
    drive(machine)["MediaRemovable"] = true;
    drive(machine)["Ejectable"] = true;
}

QVariantMap& block(Machine& machine, const std::string& name) {
    return machine.object("block_devices/" + name)["org.freedesktop.UDisks2.Block"];
}

} // namespace slatewise::test
