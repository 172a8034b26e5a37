#include "DiskService.h"
#include "Language/L10n.h"

#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeMonitor.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <future>

using namespace slatewise;
using namespace slatewise::test;
using namespace std::chrono_literals;
using std::chrono::steady_clock;
using namespace ::testing;
using Options = std::vector<std::string>;

namespace {

const Options kExt4 = {"mkfs.ext4", "-q", "-L", "DISK"};
const Options kCard = {"mkfs.exfat", "-L", "A001"};
/// As it is mounted where the kernel does not know it.
const Options kThroughFuse = {"-t", "exfat-fuse"};

class RealDisks : public ::testing::Test {
protected:
    /// "name kind id" of each volume that there is now.
    std::vector<std::string> seen() {
        monitor.refresh();
        std::vector<std::string> result;
        for (const auto& volume : monitor.currentVolumes())
            result.push_back(volume.name() + " " + std::string(rawValue(volume.kind)) + " " +
                             volume.id());
        return result;
    }

    TemporaryFolder root;
    DiskService service;
    DiskSources sources{.busAddress = service.address()};
    VolumeMonitor monitor{root.path(), {.sources = sources}};
};

} // namespace

TEST_F(RealDisks, AreKnownByTheirLabelsWhateverTheyCarry) {
    struct Case {
        const char* what;
        Options format, mount;
        const char* fileSystem;
        VolumeKind kind;
    };
    const Case cases[] = {
        {"ext4", kExt4, {}, "", VolumeKind::Destination},
        {"exFAT", kCard, kThroughFuse, "ExFAT", VolumeKind::CameraCard},
        {"NTFS",
         {"mkfs.ntfs", "-q", "-F", "-Q", "-L", "DISK"},
         {"-t", "ntfs-3g"},
         "",
         VolumeKind::Destination},
        {"Btrfs", {"mkfs.btrfs", "-q", "-L", "DISK"}, {}, "", VolumeKind::Destination},
    };
    for (const auto& [what, format, options, fileSystem, kind] : cases) {
        SCOPED_TRACE(what);
        LoopDisk disk(format);
        disk.mount(root / "other name", options);
        monitor.refresh();
        const auto volumes = monitor.currentVolumes();
        ASSERT_THAT(volumes, SizeIs(1));
        const auto& facts = volumes.front().facts;
        EXPECT_EQ(facts.volumeName, kind == VolumeKind::CameraCard ? "A001" : "DISK");
        EXPECT_EQ(facts.deviceIdentifier, disk.deviceName());
        EXPECT_EQ(facts.fileSystem, fileSystem);
        EXPECT_EQ(facts.protocolName, "Disk Image");
        EXPECT_TRUE(facts.isExternal && facts.isRemovable && !facts.isInternal);
        EXPECT_TRUE(facts.isWritable());
        EXPECT_GT(facts.totalBytes, 64 << 20);
        EXPECT_EQ(volumes.front().kind, kind);
        EXPECT_EQ(facts.lastingID(), "UUID=" + facts.volumeUUID.value_or("none"));
    }
}

TEST_F(RealDisks, OfOneFileSystemAreToldApartByTheirSubvolumes) {
    LoopDisk disk({"mkfs.btrfs", "-q", "-L", "RAID"});
    const TemporaryFolder whole;
    disk.mount(whole.path());
    for (const auto* part : {"@a", "@b"})
        runPrivileged({"btrfs", "-q", "subvolume", "create", whole / part});
    disk.unmount();
    disk.mount(root / "one", {"-o", "subvol=@a"});
    disk.mount(root / "two", {"-o", "subvol=@b"});
    const auto device = disk.deviceName();
    EXPECT_THAT(seen(), ElementsAre("RAID [@a] destination " + device + "[/@a]",
                                    "RAID [@b] destination " + device + "[/@b]"));
    const auto volumes = monitor.currentVolumes();
    EXPECT_NE(volumes[0].lastingID(), volumes[1].lastingID());

    // What is pulled takes both along.
    EXPECT_TRUE(DiskUtilClient::eject(root / "one", sources).isDiskInUse);
    EXPECT_FALSE(DiskUtilClient::eject(root / "two", sources).isDiskInUse);
    disk.wasUnmounted();
}

TEST_F(RealDisks, StayWhatTheyAreWhenTheServiceFallsSilent) {
    LoopDisk card(kCard);
    card.mount(root / "A0011", kThroughFuse);
    const auto known = "A001 cameraCard " + card.deviceName();
    EXPECT_THAT(seen(), ElementsAre(known));

    LoopDisk disk(kExt4);
    service.fallSilent();
    const auto asked = steady_clock::now();
    EXPECT_THAT(seen(), ElementsAre(known));
    EXPECT_LT(steady_clock::now() - asked, 4s) << "nobody waits for it for long";
    // Of what comes now only the kernel and the disk can speak.
    disk.mount(root / "DISK1");
    EXPECT_THAT(seen(), ElementsAre(known, "DISK destination " + disk.deviceName()));
    // It awakes with a question before it, and answers that before it looks at what has happened.
    const auto awake = [&] {
        auto asking = std::async(std::launch::async, [&] { return seen(); });
        service.speakAgain();
        return asking.get();
    };
    EXPECT_THAT(awake(), ElementsAre(known, "DISK destination " + disk.deviceName()));

    // Another one in the same slot, at the same place.
    service.fallSilent();
    disk.unmount();
    disk.exchange({"mkfs.ext4", "-q", "-L", "OTHER"});
    disk.mount(root / "DISK1");
    EXPECT_THAT(awake(), ElementsAre(known, "OTHER destination " + disk.deviceName()));

    service.end();
    EXPECT_THAT(seen(), ElementsAre(known, "OTHER destination " + disk.deviceName()));
    service.start();
    EXPECT_THAT(seen(), ElementsAre(known, "OTHER destination " + disk.deviceName()));
}

TEST_F(RealDisks, AreEjectedUnlessTheyAreBusy) {
    LoopDisk disk(kExt4);
    disk.mount(root / "DISK");
    writeFile(root / "DISK/file", "");
    {
        const std::ifstream holder(root / "DISK/file");
        try {
            DiskUtilClient::eject(root / "DISK", sources);
            ADD_FAILURE() << "it is busy";
        } catch (const DiskUtilClient::EjectError& refusal) {
            EXPECT_EQ(refusal.cause(), DiskUtilClient::EjectError::Cause::Busy) << refusal.reason();
        }
    }
    EXPECT_THAT(seen(), SizeIs(1));
    const auto ejected = DiskUtilClient::eject(root / "DISK", sources);
    disk.wasUnmounted();
    EXPECT_FALSE(std::filesystem::exists(root / "DISK/file"));
    EXPECT_EQ(ejected.text("DISK", L10n(AppLanguage::English)), "DISK is unmounted, safe to pull.");
    EXPECT_THAT(ejected.remark, IsEmpty());
}
