#include "Language/L10n.h"
#include "Offload/CopyEngine.h"

#include "Offload/OffloadError.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Offloads.h"
#include "support/Process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <utility>

// What disks do to people, tried on real file systems.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Volume = MountedVolume::FileSystem;

namespace {

constexpr std::int64_t kMiB = 1'048'576;

/// Where in the image the content stands, byte for byte.
std::int64_t offsetInImage(const std::filesystem::path& image, const std::string& content) {
    const auto bytes = readFile(image);
    const auto at = bytes.find(content);
    return at == std::string::npos ? -1 : static_cast<std::int64_t>(at);
}

/// Fills a file until the disk has about `left` bytes left.
void fillUp(const std::filesystem::path& folder, std::int64_t left) {
    const auto space = std::filesystem::space(folder);
    const auto size = static_cast<std::int64_t>(space.available) - left;
    const int file = ::open((folder / "filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::posix_fallocate(file, 0, size), 0);
    ::close(file);
}

struct Medium {
    const char* name;
    Volume fileSystem;
    std::int64_t sizeBytes;
    const char* options;
};

void PrintTo(const Medium& medium, std::ostream* out) {
    *out << medium.name;
}

class EveryFileSystem : public ::testing::TestWithParam<Medium> {
protected:
    MountedVolume disk{GetParam().fileSystem, GetParam().sizeBytes, GetParam().options};
    TemporaryFolder card;
    RunRecord record;

    /// A file system outside the kernel, whose device this user may not open.
    bool mayKeepCopiesInMemory() const {
        return GetParam().fileSystem == Volume::ExFat && ::geteuid() != 0;
    }
};

} // namespace

TEST_P(EveryFileSystem, AFlippedBitOnTheDiskIsFound) {
    for (int file = 0; file < 3; ++file)
        writeFile(card / std::to_string(file),
                  bytesOf(2 * kMiB + 5, 100u + static_cast<std::uint32_t>(file)));
    const auto marker = bytesOf(4096, 101);
    bool isFlipped = false;
    const auto flipOnce = [&](const OffloadPhase& phase) {
        if (isFlipped || !std::holds_alternative<Phase::Verifying>(phase))
            return;
        isFlipped = true;
        // As an indexer does; outside the kernel it would fill the cache of the whole device again.
        if (GetParam().fileSystem != Volume::ExFat)
            (void)readFile(disk / "session/1");
        ASSERT_GE(disk.flipBitIn(marker), 1)
            << "everything written is on the disk before the proof begins";
    };
    const auto outcome =
        CopyEngine::run(requestFor(card.path(), disk.path()), record.observer(flipOnce), {});

    if (mayKeepCopiesInMemory()) {
        EXPECT_THAT(record.problems,
                    ::testing::ElementsAre(HasSubstr("the read-back may have come from memory")))
            << "what cannot be proved is said";
        return;
    }
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(verdicts(outcome),
              (std::map<std::string, std::string>{
                  {"0", "COPY/verified"}, {"1", "FAIL/mismatch"}, {"2", "COPY/verified"}}));
    const auto& bad = outcome.files[1];
    EXPECT_TRUE(bad.destSHA256);
    EXPECT_NE(bad.sourceSHA256, bad.destSHA256);
    EXPECT_EQ(bad.sourceSHA256, independentSha256(card / "1"));
    EXPECT_THAT(record.problems, ::testing::ElementsAre(HasSubstr("The copy of 1 differs")));
}

TEST_P(EveryFileSystem, WhatIsVerifiedIsThereAfterRemounting) {
    writeFile(card / "folder/big", bytesOf(5 * kMiB + 1));
    writeFile(card / "folder/small", "1");
    writeFile(card / "empty", "");
    const auto outcome =
        CopyEngine::run(requestFor(card.path(), disk.path()), record.observer(), {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    disk.remount();
    for (const auto& row : outcome.files) {
        EXPECT_EQ(row.sourceSHA256, independentSha256(outcome.sessionRoot / row.relativePath));
        EXPECT_EQ(std::filesystem::last_write_time(card / row.relativePath) -
                          std::filesystem::last_write_time(outcome.sessionRoot / row.relativePath) <
                      std::chrono::seconds(2),
                  true);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Media, EveryFileSystem,
    ::testing::Values(Medium{"Ext4", Volume::Ext4, 64 * kMiB, ""},
                      // Journalled data refuses direct I/O, so everything goes through the cache.
                      Medium{"Ext4Cached", Volume::Ext4, 64 * kMiB, "data=journal"},
                      Medium{"Xfs", Volume::Xfs, 320 * kMiB, ""},
                      // Without checksums: with them the disk itself would refuse the bad block.
                      Medium{"Btrfs", Volume::Btrfs, 256 * kMiB, "nodatacow"},
                      Medium{"ExFat", Volume::ExFat, 64 * kMiB, ""}),
    [](const auto& medium) { return std::string(medium.param.name); });

namespace {

class FullDisk : public ::testing::Test {
protected:
    OffloadOutcome run(const std::function<void(const OffloadPhase&)>& onPhase = {}) {
        return CopyEngine::run(requestFor(card.path(), disk.path()), record.observer(onPhase), {});
    }

    MountedVolume disk{Volume::Ext4, 64 * kMiB};
    TemporaryFolder card;
    RunRecord record;
};

} // namespace

TEST_F(FullDisk, IsFoundBeforeAnythingIsWritten) {
    writeFile(card / "clip.mov", bytesOf(20 * kMiB));
    fillUp(disk.path(), 24 * kMiB);
    try {
        run();
        FAIL();
    } catch (const OffloadError& failure) {
        const auto& space = std::get<OffloadError::InsufficientSpace>(failure.reason());
        EXPECT_EQ(space.needed, 28 * kMiB);
        EXPECT_LE(space.free, 24 * kMiB);
    }
    EXPECT_FALSE(std::filesystem::exists(disk / "session"));
}

TEST_F(FullDisk, InMidRunStopsWithAClearReasonAndHonestRows) {
    for (const auto* name : {"1", "2", "3"})
        writeFile(card / name, bytesOf(8 * kMiB));
    bool isFilled = false;
    const auto outcome = run([&](const OffloadPhase& phase) {
        const auto* copying = std::get_if<Phase::Copying>(&phase);
        if (copying && copying->file == "2" && !std::exchange(isFilled, true))
            fillUp(disk.path(), 3 * kMiB);
    });
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(verdicts(outcome),
              (std::map<std::string, std::string>{
                  {"1", "COPY/copied_unverified"}, {"2", "FAIL/failed"}, {"3", "FAIL/failed"}}));
    EXPECT_THAT(record.problems, ::testing::ElementsAre(HasSubstr("there is no room left")));
    EXPECT_LT(std::filesystem::file_size(outcome.sessionRoot / "2"), 8 * kMiB);
}

TEST(PulledVolume, FailsTheRunAtEveryStageAndIsWrittenPast) {
    enum class Stage { Hashing, Scanning, FolderMade, Copying, Verifying };
    for (const bool isCard : {true, false}) {
        for (const auto stage : {Stage::Hashing, Stage::Scanning, Stage::FolderMade, Stage::Copying,
                                 Stage::Verifying}) {
            SCOPED_TRACE((isCard ? "card " : "disk ") + std::to_string(static_cast<int>(stage)));
            MountedVolume pulled(Volume::Ext4, 64 * kMiB);
            const TemporaryFolder other;
            const auto card = isCard ? pulled.path() : other.path();
            for (const auto* name : {"1", "2"})
                writeFile(card / name, bytesOf(2 * kMiB));
            bool isPulled = false;
            const auto pullAt = [&](Stage now) {
                if (now == stage && !std::exchange(isPulled, true))
                    pulled.pull();
            };
            RunRecord record;
            auto observer = record.observer([&](const OffloadPhase& phase) {
                const auto* copying = std::get_if<Phase::Copying>(&phase);
                if (std::holds_alternative<Phase::Scanning>(phase))
                    pullAt(stage == Stage::Hashing ? stage : Stage::Scanning);
                else if (copying && copying->file == "2")
                    pullAt(Stage::Copying);
                else if (std::holds_alternative<Phase::Verifying>(phase))
                    pullAt(Stage::Verifying);
            });
            observer.sessionRootCreated = [&](const auto&) {
                pullAt(Stage::FolderMade);
            };
            auto request = requestFor(card, isCard ? other.path() : pulled.path());
            request.settings.verifyOnly = stage == Stage::Hashing;
            std::string sentence;
            try {
                const auto outcome = CopyEngine::run(request, observer, {});
                EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
                ASSERT_THAT(record.problems, SizeIs(1));
                sentence = record.problems[0];
                EXPECT_GE(stage, Stage::FolderMade) << "nothing is read of what is gone";
                EXPECT_EQ(stage == Stage::Verifying,
                          std::holds_alternative<Phase::Verifying>(record.phases.back()))
                    << "no proof of what is gone";
            } catch (const OffloadError& failure) {
                EXPECT_LE(stage, Stage::Scanning);
                sentence = failure.localizedDescription();
            }
            EXPECT_THAT(sentence, HasSubstr(isCard ? "is no longer there."
                                                   : "is no longer the one that was chosen."));
            EXPECT_TRUE(isPulled);
            EXPECT_TRUE(std::filesystem::is_empty(pulled.path())) << "beneath the mount point";
        }
    }
}

TEST(DamagedDisk, WhatTurnsReadOnlyHasKeptNothing) {
    const MountedVolume disk(Volume::Ext4, 64 * kMiB);
    const TemporaryFolder card;
    RunRecord record;
    auto observer = record.observer();
    // No file is to be written any more, which would tell.
    observer.sessionRootCreated = [&](const auto&) {
        disk.turnReadOnly();
    };
    const auto outcome = CopyEngine::run(requestFor(card.path(), disk.path()), observer, {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(record.problems, ::testing::ElementsAre(HasSubstr("nothing was read back")));
}

TEST(DamagedCard, AFolderThatCannotBeReadFailsTheRunAndTheRestIsProved) {
    MountedVolume card(Volume::Ext4, 64 * kMiB);
    const TemporaryFolder destination;
    writeFile(card / "bad/lost.mov", "1");
    writeFile(card / "good.mov", "2");
    card.unmount();
    // Wherever the folder's block lies, in the journal too.
    EXPECT_GE(card.flipBitIn("lost.mov"), 1);
    card.mount();
    for (const bool isHashing : {false, true}) {
        auto request = requestFor(card.path(), destination.path());
        request.settings.verifyOnly = isHashing;
        RunRecord record;
        const auto outcome = CopyEngine::run(request, record.observer(), {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        EXPECT_EQ(verdicts(outcome)["good.mov"], isHashing ? "HASH/hashed" : "COPY/verified");
        EXPECT_THAT(record.problems, ::testing::ElementsAre(HasSubstr("bad could not be read")));
    }
}

TEST(DamagedCard, WhatADriverPassesOverInAFolderWithoutAWordFailsTheRun) {
    MountedVolume card(Volume::Ext4, 64 * kMiB);
    const TemporaryFolder destination;
    writeFile(card / "DCIM/lost.mov", "1");
    writeFile(card / "good.mov", "2");
    card.unmount();
    // Without checksums only an entry that makes no sense is noticed.
    runPrivileged({"tune2fs", "-O", "^metadata_csum", card.image()});
    const auto name = offsetInImage(card.image(), "lost.mov");
    std::fstream(card.image(), std::ios::in | std::ios::out | std::ios::binary)
        .seekp(name - 4)
        .write("\x03\x00", 2);
    for (const bool isLocked : {false, true}) {
        SCOPED_TRACE(isLocked);
        card.mount(isLocked);
        RunRecord record;
        const auto outcome =
            CopyEngine::run(requestFor(card.path(), destination.path()), record.observer(), {});
        EXPECT_EQ(verdicts(outcome)["good.mov"], "COPY/verified");
        EXPECT_THAT(record.problems,
                    ::testing::ElementsAre(isLocked ? HasSubstr("would not be noticed here")
                                                    : HasSubstr("reported errors")));
        // Nobody can know it of a locked card, and so it is told of each.
        EXPECT_EQ(outcome.status, isLocked ? OutcomeStatus::Verified : OutcomeStatus::Failed);
        card.unmount();
    }
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
            RunRecord record;
            const auto outcome = CopyEngine::run(request, record.observer(), {});
            ::_exit(outcome.problems.size() == 1 && outcome.problems[0].kind == kind ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

TEST(OtherVolume, BelowACardOrADiskIsNotTakenForIt) {
    for (const bool isOnCard : {true, false}) {
        SCOPED_TRACE(isOnCard);
        const TemporaryFolder card;
        const TemporaryFolder destination;
        writeFile(card / "1", "1");
        writeFile(card / "DCIM/2", "2");
        writeFile(card / "DCIM/3", "3");
        RunRecord record;
        std::optional<MountedVolume> other;
        const auto mountAt = [&](const std::filesystem::path& place) {
            if (!other)
                other.emplace(Volume::Ext4, 8 * kMiB, place, "");
        };
        if (isOnCard)
            mountAt(card / "extra");
        const auto outcome =
            CopyEngine::run(requestFor(card.path(), destination.path()),
                            record.observer([&](const OffloadPhase& phase) {
                                const auto* copying = std::get_if<Phase::Copying>(&phase);
                                if (!isOnCard && copying && copying->file == "DCIM/3")
                                    mountAt(destination / "session/DCIM");
                            }),
                            {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        EXPECT_THAT(record.problems,
                    ::testing::ElementsAre(HasSubstr("another disk is mounted there")));
        if (isOnCard)
            continue;
        auto request = requestFor(card.path(), destination.path());
        request.settings.folderTemplate = "session/DCIM/new";
        try {
            CopyEngine::run(request, {}, {});
            ADD_FAILURE() << "a session on the other volume";
        } catch (const std::exception& failure) {
            EXPECT_EQ(describe(failure, L10n(AppLanguage::Turkish)),
                      (destination / "session/DCIM").native() +
                          ": orada başka bir disk bağlı ya da bir bağlantı dışarı çıkıyor");
        }
    }
}

TEST(DiskWithoutCase, NamesThatBecomeOneFailTheRun) {
    const std::vector<std::pair<std::vector<const char*>, const char*>> cases = {
        {{"A.txt", "a.txt"}, "a.txt: bu diskte aynı adla başka bir dosya duruyor"},
        {{"CLIP/1", "clip/2"}, "Two folders of the card are one folder on this disk: clip"},
        {{"A:1.mov"}, "A:1.mov: bu disk bu ada ya da işleme izin vermiyor"},
        {{"B?/1"}, "B?: bu disk bu ada ya da işleme izin vermiyor"},
    };
    const MountedVolume disk(Volume::ExFat, 64 * kMiB);
    for (const auto& [names, problem] : cases) {
        const TemporaryFolder card;
        for (const auto* name : names)
            writeFile(card / name, name);
        RunRecord record;
        const auto outcome =
            CopyEngine::run(requestFor(card.path(), disk.path()), record.observer(), {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        auto texts = record.problems;
        for (const auto& each : outcome.problems)
            texts.push_back(each.text(L10n(AppLanguage::Turkish)));
        EXPECT_THAT(texts, ::testing::Contains(HasSubstr(problem)));
    }
}

TEST(BadCard, AReadErrorStopsTheRunWithTheDevicesReason) {
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
    const auto outcome =
        CopyEngine::run(requestFor(card.path(), destination.path()), record.observer(), {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(verdicts(outcome)["2"], "FAIL/failed");
    EXPECT_THAT(record.problems, ::testing::ElementsAre(HasSubstr("read or write error")));
}

TEST(BrokenClock, ADateThatNoReportCanHoldIsCopiedAndLeftOut) {
    const MountedVolume disk(Volume::Btrfs, 256 * kMiB);
    const std::map<std::int64_t, std::optional<Instant>> cases = {
        {-1, Instant() - std::chrono::seconds(1)},
        {253'402'300'799, Clock::fromIso8601("9999-12-31T23:59:59Z")},
        {253'402'300'800, std::nullopt},
        {std::numeric_limits<std::int64_t>::max(), std::nullopt},
        {std::numeric_limits<std::int64_t>::min(), std::nullopt},
    };
    for (const auto& [seconds, date] : cases) {
        SCOPED_TRACE(seconds);
        writeFile(disk / "card/a", "1");
        const std::array<timespec, 2> moments = {timespec{}, timespec{seconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (disk / "card/a").c_str(), moments.data(), 0), 0);
        RunRecord record;
        const auto outcome =
            CopyEngine::run(requestFor(disk / "card", disk.path()), record.observer(), {});
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        EXPECT_EQ(outcome.files.at(0).mtime, date);
        struct stat copy {};
        ASSERT_EQ(::stat((outcome.sessionRoot / "a").c_str(), &copy), 0);
        EXPECT_EQ(copy.st_mtim.tv_sec, seconds);
    }
}

TEST(LargeFile, MoreThanFourGibibytesAreCopiedWithoutTruncation) {
    constexpr std::int64_t kSize = 4'096 * kMiB + kMiB + 1;
    const TemporaryFolder card;
    const TemporaryFolder destination;
    writeFile(card / "long.mov", "start");
    std::filesystem::resize_file(card / "long.mov", kSize);
    RunRecord record;
    const auto outcome =
        CopyEngine::run(requestFor(card.path(), destination.path()), record.observer(), {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_EQ(outcome.bytesCopied, kSize);
    EXPECT_EQ(std::filesystem::file_size(outcome.sessionRoot / "long.mov"),
              static_cast<std::uintmax_t>(kSize));
}
