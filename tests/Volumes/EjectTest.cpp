#include "Language/L10n.h"
#include "Machine.h"
#include "MockUDisks.h"

#include "Language/AppLanguage.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/FileDescriptor.h"
#include "Volumes/DiskUtilClient.h"
#include "support/MountedVolume.h"
#include "support/Process.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto kMountPoint = "/media/me/A001";

/// A mounted volume on a USB drive of its own.
struct CardOnPaper {
    CardOnPaper() : drive(machine.addDrive("Disk", "usb")) {
        machine.addMount("8:17", "/", kMountPoint, "exfat", "/dev/sdb1");
        machine.addBlock("sdb1", "8:17", "Disk");
        machine.addFilesystem("sdb1", {kMountPoint});
    }

    DiskSources sourcesWith(const MockUDisks& service) const {
        auto sources = machine.sources();
        sources.busAddress = service.address();
        return sources;
    }

    Machine machine;
    QVariantMap& drive;
};

class Eject : public ::testing::Test, protected CardOnPaper {};

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

TEST(EjectOf, ADriveDoesWhatItsHardwareCanAndLeavesAloneWhatIsInUse) {
    const auto device = [](Machine& machine, const char* name) {
        machine.object("block_devices/sdb1")["org.freedesktop.UDisks2.Block"]["Device"] =
            QByteArray("/dev/") + name;
    };
    const auto secondVolume = [](Machine& machine, const std::vector<std::string>& places) {
        machine.addBlock("sdb2", "8:18", "Disk");
        machine.addFilesystem("sdb2", places);
    };
    // What the service says of slots, whether they can or not.
    const auto slot = [&](Machine& machine, QVariantMap& drive, const char* name) {
        drive["MediaRemovable"] = drive["Ejectable"] = true;
        device(machine, name);
    };
    const auto secondDrive = [](Machine& machine, const char* housing) {
        machine.addDrive("Second", "usb")["SiblingId"] = QString(housing);
        machine.addBlock("sdc1", "8:33", "Second");
        machine.addFilesystem("sdc1", {"/media/me/B001"});
    };
    const auto encryptedNeighbour = [](Machine& machine) {
        machine.addBlock("sdb2", "8:18", "Disk");
        machine.addBlock("dm_2d0", "253:0")["CryptoBackingDevice"] =
            QVariant::fromValue(Machine::path("block_devices/sdb2"));
        machine.addFilesystem("dm_2d0", {"/media/me/SECRET"});
    };
    constexpr auto kNothing = "";
    constexpr auto kPowerOff = "PowerOff drives/Disk";
    constexpr auto kEject = "Eject drives/Disk";
    using M = Machine;
    using D = QVariantMap;
    struct Case {
        const char* what;
        std::function<void(Machine&, QVariantMap&)> shape;
        /// Behind the unmounting.
        const char* deed;
        bool isDiskInUse;
    };
    // clang-format off
    const Case cases[] = {
        {"a disk", [](M&, D&) {}, kPowerOff, false},
        {"that cannot be powered off", [](M&, D& d) { d["CanPowerOff"] = false; }, kNothing, false},
        {"a reader, which stays alive", [](M&, D& d) { d["MediaRemovable"] = true; }, kEject, false},
        {"an SD slot", [&](M& m, D& d) { slot(m, d, "mmcblk0p1"); d["CanPowerOff"] = false; }, kNothing, false},
        {"an SD slot with power", [&](M& m, D& d) { slot(m, d, "mmcblk0p1"); }, kPowerOff, false},
        {"an NVMe slot", [&](M& m, D& d) { slot(m, d, "nvme1n1p1"); d["CanPowerOff"] = false; }, kNothing, false},
        {"an NVMe slot with power", [&](M& m, D& d) { slot(m, d, "nvme1n1p1"); }, kPowerOff, false},
        {"a second volume that is not mounted", [&](M& m, D&) { secondVolume(m, {}); }, kPowerOff, false},
        {"a second volume", [&](M& m, D&) { secondVolume(m, {"/media/me/SECOND"}); }, kNothing, true},
        {"a second volume in a reader", [&](M& m, D& d) { secondVolume(m, {"/media/me/SECOND"}); d["Ejectable"] = true; }, kNothing, true},
        {"an encrypted second volume", [&](M& m, D&) { encryptedNeighbour(m); }, kNothing, true},
        {"another housing", [&](M& m, D& d) { d["SiblingId"] = QString("usb2/2-1"); secondDrive(m, ""); }, kPowerOff, false},
        {"one housing", [&](M& m, D& d) { d["SiblingId"] = QString("usb2/2-1"); secondDrive(m, "usb2/2-1"); }, kNothing, true},
        {"two slots of a reader", [&](M& m, D& d) { d["SiblingId"] = QString("usb2/2-1"); secondDrive(m, "usb2/2-1"); d["MediaRemovable"] = true; }, kEject, false},
    };
    // clang-format on
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        CardOnPaper card;
        each.shape(card.machine, card.drive);
        const MockUDisks service(card.machine.objects());
        const auto ejected = DiskUtilClient::eject(kMountPoint, card.sourcesWith(service));
        std::vector<std::string> deeds = {"Unmount block_devices/sdb1"};
        if (*each.deed != '\0')
            deeds.emplace_back(each.deed);
        EXPECT_EQ(service.deeds(), deeds);
        EXPECT_EQ(ejected.isDiskInUse, each.isDiskInUse);
        EXPECT_EQ(ejected.text("A001", L10n(AppLanguage::English)),
                  each.isDiskInUse ? "A001 is unmounted, but another volume of the same disk or "
                                     "housing is in use: do not pull it."
                                   : "A001 is unmounted, safe to pull.");
    }
}

TEST_F(Eject, TakesAwayOnlyThePlaceItIsAskedFor) {
    MountedVolume disk(MountedVolume::FileSystem::Ext4, 16 * 1'048'576);
    writeFile(disk / "file", "");
    const TemporaryFolder elsewhere;
    BindMount second(disk.path(), elsewhere.path());
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
    second.wasUnmounted();
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
