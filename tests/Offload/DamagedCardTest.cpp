#include "Offload/CopyEngine.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Offloads.h"
#include "support/Process.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <tuple>

// What a run makes of cards that cannot be read as a whole, on real file systems.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;
using Volume = MountedVolume::FileSystem;

namespace {

constexpr std::int64_t kMiB = 1'048'576;

/// Where in the image the content stands, byte for byte.
std::int64_t offsetInImage(const std::filesystem::path& image, const std::string& content) {
    const auto at = readFile(image).find(content);
    return at == std::string::npos ? -1 : static_cast<std::int64_t>(at);
}

} // namespace

TEST(DamagedCard, WhatCannotBeReadOfAFolderFailsTheRunAndTheRestIsProved) {
    using Damage = void (*)(const MountedVolume&);
    // Wherever the folder's block lies, in the journal too.
    const Damage flipBit = [](const auto& card) {
        EXPECT_GE(card.flipBitIn("lost.mov"), 1);
    };
    // Without checksums a driver passes over an entry that makes no sense without a word.
    const Damage spoilEntry = [](const auto& card) {
        // It refuses one that was not looked through since it was mounted.
        runPrivileged({"tune2fs", "-T", "now", card.image()});
        runPrivileged({"tune2fs", "-O", "^metadata_csum", card.image()});
        std::fstream(card.image(), std::ios::in | std::ios::out | std::ios::binary)
            .seekp(offsetInImage(card.image(), "lost.mov") - 4)
            .write("\x03\x00", 2);
    };
    // Whether the run only hashes, and of a locked card, and what it tells.
    using Run = std::tuple<bool, bool, const char*>;
    const std::pair<Damage, std::vector<Run>> cases[] = {
        {flipBit,
         {{false, false, "bad could not be read"}, {true, false, "bad could not be read"}}},
        {spoilEntry,
         {{false, false, "errors were reported"}, {false, true, "would not be noticed"}}},
    };
    for (const auto& [damage, runs] : cases) {
        MountedVolume card(Volume::Ext4, 64 * kMiB);
        const TemporaryFolder destination;
        writeFile(card / "bad/lost.mov", "1");
        writeFile(card / "good.mov", "2");
        card.unmount();
        damage(card);
        for (const auto& [isHashing, isLocked, problem] : runs) {
            SCOPED_TRACE(problem);
            card.mount(isLocked);
            auto request = requestFor(card.path(), destination.path());
            request.settings.verifyOnly = isHashing;
            RunRecord record;
            const auto outcome = record.run(request);
            EXPECT_EQ(verdicts(outcome)["good.mov"], isHashing ? "HASH/hashed" : "COPY/verified");
            EXPECT_THAT(record.problems, ElementsAre(HasSubstr(problem)));
            // Nobody can know it of a locked card, and so it is told of each.
            EXPECT_EQ(outcome.status, isLocked ? OutcomeStatus::Verified : OutcomeStatus::Failed);
            card.unmount();
        }
    }
}

TEST(DamagedCard, OneThatTakesNoWritesAnyMoreHasMetDamage) {
    MountedVolume card(Volume::Ext4, 8 * kMiB);
    const TemporaryFolder destination;
    writeFile(card / "good.mov", "1");
    RunRecord record;
    const auto turned = atFirst<Phase::Copying>([&] {
        runPrivileged({"mount", "-o", "remount,ro", card.path()});
    });
    const auto outcome =
        CopyEngine::run(requestFor(card.path(), destination.path()), record.observer(turned), {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("errors were reported")));
}

TEST(DamagedCard, ALostAndFoundIsPassedOverOnlyWhereTheFileSystemMadeIt) {
    constexpr uid_t kNobody = 65534;
    const std::vector<std::pair<std::string, OffloadProblem::Kind>> cases = {
        {"root", OffloadProblem::Kind::LostAndFoundNotRead},
        {std::to_string(kNobody), OffloadProblem::Kind::FolderNotRead}};
    for (const auto& [owner, kind] : cases) {
        SCOPED_TRACE(owner);
        const MountedVolume card(Volume::Ext4, 8 * kMiB);
        std::filesystem::create_directory(card / "lost+found");
        std::filesystem::permissions(card / "lost+found", std::filesystem::perms::none);
        runPrivileged({"chown", owner, card / "lost+found"});
        // Root reads every folder, and the folders on the way may be closed to others.
        const pid_t child = ::fork();
        if (child == 0) {
            if (::chdir(card.path().c_str()) != 0 || (::geteuid() == 0 && ::seteuid(kNobody) != 0))
                ::_exit(10);
            auto request = requestFor(".", ".");
            request.settings.verifyOnly = true;
            const auto outcome = RunRecord().run(request);
            ::_exit(outcome.problems.size() == 1 && outcome.problems[0].kind == kind ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

TEST(DamagedCard, AReadErrorStopsTheRunWithTheDevicesReason) {
    MountedVolume card(Volume::Ext4, 64 * kMiB);
    const TemporaryFolder destination;
    writeFile(card / "1", bytesOf(kMiB, 1));
    writeFile(card / "2", bytesOf(4 * kMiB, 2));
    card.remount();
    // A device that ends in the middle of a file answers like one with bad sectors.
    const auto offset = offsetInImage(card.image(), bytesOf(4 * kMiB, 2).substr(2 * kMiB, 4096));
    ASSERT_GT(offset, 0);
    std::filesystem::resize_file(card.image(), static_cast<std::uintmax_t>(offset));
    RunRecord record;
    const auto outcome = record.run(requestFor(card.path(), destination.path()));
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(verdicts(outcome)["2"], "FAIL/failed");
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("read or write error")));
}
