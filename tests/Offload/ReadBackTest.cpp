#include "Offload/CopyEngine.h"

#include "Language/L10n.h"
#include "Offload/ProvedCopies.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DeviceCache.h"
#include "support/Files.h"
#include "support/MappedFile.h"
#include "support/MountedVolume.h"
#include "support/Offloads.h"
#include "support/Process.h"

#include <gmock/gmock.h>

// Where a read-back may not have come from the disk.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr std::size_t kMiB = 1'048'576;
constexpr auto kReadFromMemory = OffloadProblem::Kind::ReadFromMemory;

} // namespace

TEST(ReadBack, SaysSoWhenAnotherProgramKeepsTheCopyInMemory) {
    const MountedVolume disk(MountedVolume::FileSystem::Ext4, 64 * kMiB, "data=journal");
    const TemporaryFolder card;
    const auto content = bytesOf(3 * kMiB, 7);
    writeFile(card / "clip.mov", content);
    RunRecord record;
    std::unique_ptr<MappedFile> mapped;
    const auto outcome = CopyEngine::run(
        requestFor(card.path(), disk.path()), record.observer([&](const OffloadPhase& phase) {
            if (mapped || !std::holds_alternative<Phase::Verifying>(phase))
                return;
            mapped = std::make_unique<MappedFile>(disk / "session/clip.mov", content.size());
            EXPECT_GE(disk.flipBitIn(content.substr(kMiB + 4096, 4096)), 1);
        }),
        {});
    ASSERT_TRUE(mapped);
    // It looks right, and nobody can know better: that much is said.
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_THAT(outcome.problems, ElementsAre(OffloadProblem{kReadFromMemory, "clip.mov"}));
}

TEST(ReadBack, SaysSoWhereTheDiskIsAFileInMemory) {
    const MountedVolume disk(MountedVolume::FileSystem::Ext4, 64 * kMiB);
    const TemporaryFolder card;
    writeFile(card / "clip.mov", "1");
    for (const auto* isDirect : {"on", "off"}) {
        runPrivileged({"losetup", std::string("--direct-io=") + isDirect,
                       BlockDevices::pathUnder(disk.path())});
        RunRecord record;
        const auto outcome =
            CopyEngine::run(requestFor(card.path(), disk.path()), record.observer(), {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        EXPECT_EQ(outcome.problems.empty(), isDirect == std::string("on")) << isDirect;
    }
}

TEST(ReadBack, SaysSoWhereTheFileOfADiskLiesOnOneThatIsRemembered) {
    const MountedVolume below(MountedVolume::FileSystem::Ext4, 64 * kMiB);
    std::filesystem::create_directory(below / "disk");
    runPrivileged({"truncate", "--size=16M", below / "image"});
    runPrivileged({"mkfs.ext4", "-q", below / "image"});
    runPrivileged({"mount", "-o", "loop", below / "image", below / "disk"});
    runPrivileged({"losetup", "--direct-io=on", BlockDevices::pathUnder(below / "disk")});
    for (const auto* isDirect : {"on", "off"}) {
        runPrivileged({"losetup", std::string("--direct-io=") + isDirect,
                       BlockDevices::pathUnder(below.path())});
        EXPECT_EQ(DeviceCache::drop(below / "disk") == DeviceCache::Drop::NotNeeded,
                  isDirect == std::string("on"))
            << isDirect;
    }
    runPrivileged({"umount", below / "disk"});
}

TEST(ReadBack, ATouchedCopyIsReadOnceMoreAndNoMore) {
    const TemporaryFolder disk;
    const auto copy = disk / "clip.mov";
    writeFile(copy, bytesOf(5000));
    ProvedCopies copies{RootFolder(disk.path())};
    copies.note(0, FileSystem::attributes(copy));
    std::vector<FileCopyResult> rows(1);
    rows[0].relativePath = "clip.mov";
    rows[0].sizeBytes = 5000;
    rows[0].verifyStatus = VerifyStatus::Verified;
    rows[0].sourceSHA256 = independentSha256(copy);
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THAT(copies.findChanges(rows, stopped.get_token()), IsEmpty());
    touchRights(copy);
    const auto changes = copies.findChanges(rows, stopped.get_token());
    ASSERT_THAT(changes, SizeIs(1));
    EXPECT_THAT(changes[0].text(L10n(AppLanguage::English)), HasSubstr("and Stop came before"));
    EXPECT_EQ(rows[0].verifyStatus, VerifyStatus::CopiedUnverified);
    rows[0].verifyStatus = VerifyStatus::Verified;
    EXPECT_THAT(copies.findChanges(rows), IsEmpty());
    EXPECT_THAT(copies.findChanges(rows, stopped.get_token()), IsEmpty()) << "proved anew";
    // What is written beside the copies must stay as it was, too.
    const std::string list = "list.mhl";
    writeFile(disk / list, "a");
    copies.noteLists({&list, 1});
    EXPECT_THAT(copies.findChanges(rows), IsEmpty());
    writeFile(disk / list, "b");
    touchRights(disk / list); // both may have been written in one tick of the clock
    EXPECT_THAT(copies.findChanges(rows), SizeIs(1));
}

TEST(ReadBack, SaysSoWhereAFileLiesAmongTheRecordsOfTheFileSystem) {
    using Volume = MountedVolume::FileSystem;
    for (const auto& [fileSystem, canBeAvoided] :
         {std::pair(Volume::Btrfs, true), std::pair(Volume::Ext4Inline, false)}) {
        const MountedVolume disk(fileSystem, 256 * kMiB);
        const TemporaryFolder card;
        const auto content = bytesOf(canBeAvoided ? 500 : 50);
        writeFile(card / "clip.xml", content);
        RunRecord record;
        bool isFlipped = false;
        const auto outcome = CopyEngine::run(
            requestFor(card.path(), disk.path()), record.observer([&](const OffloadPhase& phase) {
                if (!std::holds_alternative<Phase::Verifying>(phase) ||
                    std::exchange(isFlipped, true))
                    return;
                EXPECT_GE(disk.flipBitIn(content), 1);
            }),
            {});
        EXPECT_TRUE(isFlipped);
        using Kind = OffloadProblem::Kind;
        ASSERT_EQ(outcome.problems.size(), 1u);
        EXPECT_EQ(outcome.problems[0].kind,
                  canBeAvoided ? Kind::NotReadBack : Kind::ReadFromMemory);
        EXPECT_EQ(outcome.problems[0].subject, "clip.xml");
    }
}

TEST(ReadBack, SaysSoWhereThereIsNothingButMemoryOrNobodyKnows) {
    const MountedVolume below(MountedVolume::FileSystem::Ext4, 64 * kMiB);
    for (const auto* layer : {"upper", "work"})
        std::filesystem::create_directory(below / layer);
    const auto layers = "lowerdir=" + below.path().native() +
                        ",upperdir=" + (below / "upper").native() +
                        ",workdir=" + (below / "work").native();
    for (const auto& [fileSystem, options] :
         {std::pair("ramfs", std::string("mode=0777")), std::pair("overlay", layers)}) {
        const TemporaryFolder folder;
        const TemporaryFolder card;
        std::filesystem::create_directory(folder / "disk");
        runPrivileged({"mount", "-t", fileSystem, "-o", options, fileSystem, folder / "disk"});
        for (const auto* name : {"1", "2", "3", "4"})
            writeFile(card / name, bytesOf(kMiB + 1));
        RunRecord record;
        const auto outcome =
            CopyEngine::run(requestFor(card.path(), folder / "disk"), record.observer(), {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        EXPECT_THAT(outcome.problems,
                    ElementsAre(OffloadProblem{kReadFromMemory, (folder / "disk").native()}))
            << "once for the disk, not for each of its files";
        for (const auto& row : outcome.files)
            EXPECT_EQ(row.destSHA256, independentSha256(card / row.relativePath));
        runPrivileged({"umount", folder / "disk"});
    }
}
