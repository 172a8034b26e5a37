#include "Language/L10n.h"
#include "Machine.h"
#include "MockUDisks.h"

#include "Language/AppLanguage.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/Files/FileDescriptor.h"
#include "Volumes/DiskUtilClient.h"
#include "support/MountedVolume.h"
#include "support/Process.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <stdexcept>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto kMountPoint = "/media/me/A001";

/// A mounted volume on a USB drive of its own.
class Eject : public ::testing::Test {
protected:
    Eject() : drive(machine.addDrive("Disk", "usb")) {
        machine.addMount("8:17", "/", kMountPoint, "exfat", "/dev/sdb1");
        machine.addBlock("sdb1", "8:17", "Disk");
        machine.addFilesystem("sdb1", {kMountPoint});
    }

    DiskSources sourcesWith(const MockUDisks& service) const {
        auto sources = machine.sources();
        sources.busAddress = service.address();
        return sources;
    }

    std::vector<std::string> deedsOfAnEject() {
        const MockUDisks service(machine.objects());
        last = DiskUtilClient::eject(kMountPoint, sourcesWith(service));
        return service.deeds();
    }

    Machine machine;
    QVariantMap& drive;
    DiskUtilClient::Ejected last;
};

/// The failure of an eject that must fail.
DiskUtilClient::EjectError refusalOf(const std::filesystem::path& mountPoint,
                                     const DiskSources& sources) {
    try {
        DiskUtilClient::eject(mountPoint, sources);
    } catch (const DiskUtilClient::EjectError& refusal) {
        return refusal;
    }
    throw std::runtime_error("nothing refused the eject");
}

} // namespace

TEST_F(Eject, DoesWhatTheHardwareCan) {
    EXPECT_THAT(deedsOfAnEject(),
                ElementsAre("Unmount block_devices/sdb1", "PowerOff drives/Disk"));
    drive["CanPowerOff"] = false;
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
    // The reader itself stays alive.
    drive["MediaRemovable"] = drive["CanPowerOff"] = true;
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1", "Eject drives/Disk"));
}

TEST_F(Eject, LeavesADriveAloneWhileAnotherVolumeOnItIsMounted) {
    machine.addBlock("sdb2", "8:18", "Disk");
    machine.addFilesystem("sdb2", {});
    EXPECT_THAT(deedsOfAnEject(),
                ElementsAre("Unmount block_devices/sdb1", "PowerOff drives/Disk"));
    machine.addFilesystem("sdb2", {"/media/me/SECOND"});
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
    drive["Ejectable"] = true;
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
    EXPECT_TRUE(last.isDiskInUse);
    EXPECT_EQ(last.text("A001", L10n(AppLanguage::English)),
              "A001 is unmounted, but another volume of the same disk or housing is in use: do not "
              "pull it.");
}

TEST_F(Eject, AsksNoSlotForWhatItCannotDo) {
    // What the service says of both kinds, whether they can or not.
    drive["MediaRemovable"] = true;
    drive["Ejectable"] = true;
    for (const auto* device : {"mmcblk0p1", "nvme1n1p1"}) {
        SCOPED_TRACE(device);
        machine.object("block_devices/sdb1")["org.freedesktop.UDisks2.Block"]["Device"] =
            QByteArray("/dev/") + device;
        drive["CanPowerOff"] = false;
        EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
        EXPECT_EQ(last.text("A001", L10n(AppLanguage::English)),
                  "A001 is unmounted, safe to pull.");
        drive["CanPowerOff"] = true;
        EXPECT_THAT(deedsOfAnEject(),
                    ElementsAre("Unmount block_devices/sdb1", "PowerOff drives/Disk"));
    }
}

TEST_F(Eject, LeavesADriveAloneWhileAnEncryptedVolumeOnItIsMounted) {
    machine.addBlock("sdb2", "8:18", "Disk");
    machine.addBlock("dm_2d0", "253:0")["CryptoBackingDevice"] =
        QVariant::fromValue(Machine::path("block_devices/sdb2"));
    machine.addFilesystem("dm_2d0", {"/media/me/SECRET"});
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
}

TEST_F(Eject, LeavesPowerOnWhileAnotherDriveInTheHousingIsMounted) {
    drive["SiblingId"] = QString("usb2/2-1");
    auto& second = machine.addDrive("Second", "usb");
    machine.addBlock("sdc1", "8:33", "Second");
    machine.addFilesystem("sdc1", {"/media/me/B001"});
    EXPECT_THAT(deedsOfAnEject(),
                ElementsAre("Unmount block_devices/sdb1", "PowerOff drives/Disk"));
    second["SiblingId"] = QString("usb2/2-1");
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1"));
    EXPECT_TRUE(last.isDiskInUse);
    drive["MediaRemovable"] = true;
    EXPECT_THAT(deedsOfAnEject(), ElementsAre("Unmount block_devices/sdb1", "Eject drives/Disk"));
    EXPECT_FALSE(last.isDiskInUse);
}

TEST_F(Eject, TakesAwayOnlyThePlaceItIsAskedFor) {
    MountedVolume disk(MountedVolume::FileSystem::Ext4, 16 * 1'048'576);
    writeFile(disk / "file", "");
    const TemporaryFolder elsewhere;
    runPrivileged({"mount", "--bind", disk.path().native(), elsewhere.path().native()});
    const auto numbers = MountTable::at(MountTable::read(), disk.path())->device;
    machine.addBlock("loop0", BlockDevices::text(numbers));
    machine.addFilesystem("loop0", {elsewhere.path(), disk.path()});
    const MockUDisks service(machine.objects());
    EXPECT_TRUE(DiskUtilClient::eject(disk.path(), {.busAddress = service.address()}).isDiskInUse);
    disk.wasUnmounted();
    EXPECT_FALSE(std::filesystem::exists(disk / "file"));
    EXPECT_TRUE(std::filesystem::exists(elsewhere / "file"));
    EXPECT_THAT(service.deeds(), IsEmpty());
    EXPECT_FALSE(
        DiskUtilClient::eject(elsewhere.path(), {.busAddress = service.address()}).isDiskInUse);
    EXPECT_FALSE(std::filesystem::exists(elsewhere / "file"));
}

TEST_F(Eject, LocksWhatWasEncrypted) {
    machine.addMount("253:0", "/", "/media/me/SECRET", "ext4", "/dev/mapper/luks-1");
    machine.addFilesystem("sdb1", {});
    machine.object("block_devices/sdb1").remove("org.freedesktop.UDisks2.Filesystem");
    machine.object("block_devices/sdb1")["org.freedesktop.UDisks2.Encrypted"] = {};
    machine.addBlock("dm_2d0", "253:0")["CryptoBackingDevice"] =
        QVariant::fromValue(Machine::path("block_devices/sdb1"));
    machine.addFilesystem("dm_2d0", {"/media/me/SECRET"});
    const MockUDisks service(machine.objects());
    DiskUtilClient::eject("/media/me/SECRET", sourcesWith(service));
    EXPECT_THAT(service.deeds(), ElementsAre("Unmount block_devices/dm_2d0",
                                             "Lock block_devices/sdb1", "PowerOff drives/Disk"));
}

TEST_F(Eject, OfABusyDiskFailsInTheUsersLanguageAndGoesNoFurther) {
    MockUDisks service(machine.objects());
    service.refuse("Unmount", "DeviceBusy");
    const auto english = refusalOf(kMountPoint, sourcesWith(service));
    EXPECT_EQ(english.localizedDescription(), "Could not eject /media/me/A001.");
    EXPECT_EQ(english.code(), 1);
    EXPECT_THAT(english.reason(), HasSubstr("DeviceBusy"));
    EXPECT_EQ(english.cause(), DiskUtilClient::EjectError::Cause::Busy);
    UserDefaults::standard().keepChangesInMemory();
    Language::persist(AppLanguage::Turkish, UserDefaults::standard());
    EXPECT_EQ(refusalOf(kMountPoint, sourcesWith(service)).localizedDescription(),
              "Çıkarma başarısız: /media/me/A001");
    Language::persist(AppLanguage::English, UserDefaults::standard());
    EXPECT_THAT(service.deeds(),
                ElementsAre("Unmount block_devices/sdb1", "Unmount block_devices/sdb1"));
}

TEST_F(Eject, ThatEndsWithUnmountingIsSafeToPullAllTheSame) {
    MockUDisks service(machine.objects());
    service.refuse("PowerOff", "Failed");
    const auto ejected = DiskUtilClient::eject(kMountPoint, sourcesWith(service));
    EXPECT_FALSE(ejected.isDiskInUse);
    EXPECT_THAT(ejected.remark, HasSubstr("PowerOff"));
}

TEST_F(Eject, WithoutTheServiceUnmountsWithTheSystemsTool) {
    MountedVolume disk(MountedVolume::FileSystem::Ext4, 16 * 1'048'576);
    const auto sources = DiskSources{.busAddress = "unix:path=/nowhere"};
    {
        const FileDescriptor holder(
            ::open((disk / "open").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_TRUE(holder);
        const auto busy = refusalOf(disk.path(), sources);
        EXPECT_NE(busy.code(), 0);
        EXPECT_EQ(busy.cause(), DiskUtilClient::EjectError::Cause::Busy) << busy.reason();
        EXPECT_EQ(busy.localizedDescription(), "Could not eject " + disk.path().native() + ".");
        EXPECT_TRUE(std::filesystem::exists(disk / "open"));
    }
    DiskUtilClient::eject(disk.path(), sources);
    EXPECT_FALSE(std::filesystem::exists(disk / "open"));
    disk.wasUnmounted();
    // Nothing is mounted there any more.
    EXPECT_EQ(refusalOf(disk.path(), sources).reason(), "umount: not mounted.");
}
