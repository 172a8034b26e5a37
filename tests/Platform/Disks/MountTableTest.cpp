#include "Platform/Disks/MountTable.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Disks/DeviceErrors.h"
#include "Platform/Disks/FileSystemProbe.h"
#include "Platform/Disks/MountPoints.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Process.h"

#include <gmock/gmock.h>
#include <sys/sysmacros.h>

using namespace slatewise;
using namespace slatewise::test;

TEST(MountTable, ReadsTheKernelsLines) {
    const auto mounts =
        MountTable::parse("27 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
                          "90 27 8:17 / /media/me/A\\040B\\011\\134 rw,nosuid shared:7 master:2 - "
                          "exfat /dev/sdb1 rw\n"
                          "91 27 0:45 /@home /media/me/ro ro - btrfs /dev/sdc1 rw\n"
                          "92 27 0:46 / /media/me/super rw - cifs //server/my\\040share rw,ro\n"
                          "93 27 0:47 / /media/me/nameless rw - tmpfs  rw,rootcontext=a,b\n"
                          "94 27 8:33 / /media/me/broken rw no dash\n"
                          "95 27 8 / /media/me/no-device rw - ext4 /dev/sdd rw\n"
                          "garbage\n");
    ASSERT_EQ(mounts.size(), 5U);
    EXPECT_EQ(mounts[1].mountPoint, "/media/me/A B\t\\");
    EXPECT_EQ(mounts[1].device, makedev(8, 17));
    EXPECT_EQ(mounts[1].fileSystem, "exfat");
    EXPECT_EQ(mounts[1].source, "/dev/sdb1");
    EXPECT_FALSE(mounts[1].isReadOnly);
    EXPECT_EQ(mounts[2].root, "/@home");
    EXPECT_TRUE(mounts[2].isReadOnly);
    EXPECT_EQ(mounts[3].source, "//server/my share");
    EXPECT_TRUE(mounts[3].isReadOnly);
    EXPECT_EQ(mounts[4].source, "");
}

TEST(MountTable, KnowsWhatOneSeesAtAPath) {
    const auto mounts = MountTable::parse("27 1 254:0 / / rw - ext4 /dev/vda rw\n"
                                          "90 27 8:17 / /media/me/A rw - vfat /dev/sdb1 rw\n"
                                          "91 27 8:33 / /media/me/A rw - exfat /dev/sdc1 rw\n"
                                          "92 27 8:49 / /media/me/A/B rw - ext4 /dev/sdd1 rw\n");
    EXPECT_EQ(MountTable::at(mounts, "/media/me/A")->source, "/dev/sdc1");
    EXPECT_EQ(MountTable::at(mounts, "/media/me"), nullptr);
    EXPECT_EQ(MountTable::holding(mounts, "/media/me/A/DCIM")->source, "/dev/sdc1");
    EXPECT_EQ(MountTable::holding(mounts, "/media/me/A/B")->source, "/dev/sdd1");
    EXPECT_EQ(MountTable::holding(mounts, "/media/me/AB/C")->source, "/dev/vda");
    EXPECT_EQ(MountTable::holding({}, "/"), nullptr);
}

TEST(MountPoints, AreBareWhereAVolumeIsMeantToBe) {
    const TemporaryFolder folder;
    const auto table = folder / "fstab";
    const auto mounts = folder / "mountinfo";
    const auto isBare = [&](const std::filesystem::path& path) {
        return MountPoints::isBare(path, table, mounts);
    };
    const auto place = folder / "SSD 1";
    writeFile(place / "A001/clip.mov", "copied by mistake");
    writeFile(table, "/dev/vda / ext4 defaults 0 1\n/dev/sdb1 " + (folder / "SSD").native() +
                         "\\0401 exfat noauto 0 0\n");
    writeFile(mounts, "27 1 254:0 / / rw - ext4 /dev/vda rw\n");
    EXPECT_TRUE(isBare(place));
    EXPECT_TRUE(isBare(place / "A001"));
    EXPECT_FALSE(isBare(folder / "SSD 12"));
    EXPECT_FALSE(isBare(folder.path()));
    std::filesystem::create_directory_symlink(place, folder / "link");
    EXPECT_TRUE(isBare(folder / "link"));
    // Desktops make the folder there, and take it away with the disk.
    const auto medium = "/media/slatewise-test-" + std::to_string(::getpid());
    runPrivileged({"mkdir", "-p", medium + "/A001"});
    EXPECT_TRUE(isBare(medium)) << "whatever was copied there by mistake";
    runPrivileged({"rm", "-r", medium});
    EXPECT_FALSE(isBare(medium)) << "not there";
    writeFile(mounts, "27 1 254:0 / / rw - ext4 /dev/vda rw\n90 27 8:17 / " +
                          (folder / "SSD").native() + "\\0401 rw - exfat /dev/sdb1 rw\n");
    EXPECT_FALSE(isBare(place)) << "what is mounted there is the disk";
    // Above it may lie another volume than the system's, and the table's names may end in a slash.
    writeFile(table, "/dev/sdb1 " + (folder / "data/SSD/").native() + " ext4 noauto 0 0\n");
    writeFile(mounts, "27 1 254:0 / / rw - ext4 /dev/vda rw\n90 27 8:17 / " +
                          (folder / "data").native() + " rw - xfs /dev/sdc1 rw\n");
    std::filesystem::create_directories(folder / "data/SSD");
    EXPECT_TRUE(isBare(folder / "data/SSD"));
    EXPECT_FALSE(isBare(folder / "data"));
}

TEST(DeviceErrors, AreThoseOfTheDiskBelow) {
    const TemporaryFolder sys;
    const auto disk = sys / "devices/usb/sdb";
    writeFile(disk / "sdb1/partition", "1");
    writeFile(disk / "device/ioerr_cnt", "0xe\n");
    std::filesystem::create_directories(sys / "dev/block");
    std::filesystem::create_symlink(disk / "sdb1", sys / "dev/block/8:17");
    const DeviceErrors errors(makedev(8, 17), sys.path());
    EXPECT_FALSE(errors.haveGrown());
    EXPECT_TRUE(errors.areCounted());
    writeFile(disk / "device/ioerr_cnt", "0x10\n");
    EXPECT_TRUE(errors.haveGrown());
    EXPECT_FALSE(DeviceErrors(makedev(8, 33), sys.path()).haveGrown()) << "not known there";
    EXPECT_FALSE(DeviceErrors(makedev(8, 33), sys.path()).areCounted());
    std::filesystem::remove(disk / "device/ioerr_cnt");
    EXPECT_FALSE(errors.areCounted()) << "as of a slot of the machine's own";
}

TEST(DeviceCache, KnowsADiskOfAnotherMachine) {
    const TemporaryFolder sys;
    const struct {
        const char* device;
        const char* transport;
        bool isHardware;
    } cases[] = {
        {"pci0/ata1/host0/target0:0:0/0:0:0:0", "", true},
        {"platform/host3/session1/target3:0:0/3:0:0:0", "", false},
        {"pci0/nvme/nvme0", "transport", true},
        {"virtual/nvme-fabrics/ctl/nvme1", "transport", false},
        {"virtual/nvme-subsystem/nvme-subsys2", "nvme2/transport", false},
        {nullptr, "", false},
    };
    int number = 0;
    for (const auto& [device, transport, isHardware] : cases) {
        const auto disk = sys / ("block" + std::to_string(number++));
        std::filesystem::create_directories(disk);
        if (device) {
            std::filesystem::create_directories(sys / device);
            std::filesystem::create_symlink(sys / device, disk / "device");
            if (*transport)
                writeFile(sys / device / transport, isHardware ? "pcie\n" : "tcp\n");
        }
        EXPECT_EQ(DeviceCache::answersFromHardware(disk), isHardware) << number;
    }
}

/// Btrfs has numbers of its own that stand for no device, exFAT through FUSE those of its device.
TEST(BlockDevices, AreFoundUnderAnyFileSystem) {
    constexpr std::int64_t kSmallestBtrfs = 128 * 1'048'576;
    for (const auto kind : {MountedVolume::FileSystem::Btrfs, MountedVolume::FileSystem::ExFat}) {
        const MountedVolume volume(kind, kSmallestBtrfs);
        DiskFacts facts;
        FileSystemProbe::addTo(facts, volume.image());
        const bool isBtrfs = kind == MountedVolume::FileSystem::Btrfs;
        EXPECT_EQ(facts.fileSystem, isBtrfs ? "btrfs" : "exfat");
        EXPECT_EQ(facts.fileSystemVersion, isBtrfs ? "" : "1.0");
        const auto device = BlockDevices::pathUnder(volume.path());
        EXPECT_TRUE(std::filesystem::is_block_file(device)) << device;
        const auto mounts = MountTable::read();
        EXPECT_EQ(MountTable::at(mounts, volume.path())->source, device);
    }
    EXPECT_EQ(BlockDevices::pathUnder("/proc"), "");
}
