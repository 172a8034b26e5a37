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
#include <unistd.h>

#include <array>
#include <optional>
#include <utility>

// What disks do to people, tried on real file systems.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;
using Volume = MountedVolume::FileSystem;

namespace {

constexpr std::int64_t kMiB = 1'048'576;

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
};

class DiskThatTakesNoMore : public ::testing::Test {
protected:
    MountedVolume disk{Volume::Ext4, 64 * kMiB};
    TemporaryFolder card;
    RunRecord record;
    CopyEngine::Request request = requestFor(card.path(), disk.path());
};

} // namespace

TEST_P(EveryFileSystem, AFlippedBitOnTheDiskIsFound) {
    for (const std::uint32_t file : {0u, 1u, 2u})
        writeFile(card / std::to_string(file),
                  bytesOf(file == 0 ? 2 * kMiB + 5 : 65'541, 100 + file));
    const auto marker = bytesOf(4096, 101);
    const auto flip = [&] {
        // As an indexer does; outside the kernel it would fill the cache of the whole device again.
        if (GetParam().fileSystem != Volume::ExFat)
            (void)readFile(disk / "session/1");
        ASSERT_GE(disk.flipBitIn(marker), 1)
            << "everything written is on the disk before the proof begins";
    };
    const auto outcome =
        record.run(requestFor(card.path(), disk.path()), atFirst<Phase::Verifying>(flip));

    // A file system outside the kernel, whose device this user may not open.
    if (GetParam().fileSystem == Volume::ExFat && ::geteuid() != 0) {
        EXPECT_THAT(record.problems,
                    ElementsAre(HasSubstr("the read-back may have come from memory")))
            << "what cannot be proved is said";
        return;
    }
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(verdicts(outcome),
              (Verdicts{{"0", "COPY/verified"}, {"1", "FAIL/mismatch"}, {"2", "COPY/verified"}}));
    const auto& bad = outcome.files[1];
    EXPECT_TRUE(bad.destSHA256);
    EXPECT_NE(bad.sourceSHA256, bad.destSHA256);
    EXPECT_EQ(bad.sourceSHA256, independentSha256(card / "1"));
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("The copy of 1 differs")));
}

TEST_P(EveryFileSystem, WhatIsVerifiedIsThereAfterRemounting) {
    writeFile(card / "folder/big", bytesOf(5 * kMiB + 1));
    writeFile(card / "folder/small", "1");
    writeFile(card / "empty", "");
    for (const auto* name : {"folder/big", "folder/small", "empty"})
        std::filesystem::last_write_time(
            card / name, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const auto outcome = record.run(requestFor(card.path(), disk.path()));
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    disk.remount();
    for (const auto& row : outcome.files) {
        EXPECT_EQ(row.sourceSHA256, independentSha256(outcome.sessionRoot / row.relativePath));
        const auto drift = std::filesystem::last_write_time(card / row.relativePath) -
                           std::filesystem::last_write_time(outcome.sessionRoot / row.relativePath);
        EXPECT_LT(std::chrono::abs(drift), std::chrono::seconds(2));
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

TEST_F(DiskThatTakesNoMore, IsFoundBeforeAnythingIsWritten) {
    writeFile(card / "clip.mov", bytesOf(20 * kMiB));
    fillUp(disk.path(), 24 * kMiB);
    try {
        record.run(request);
        FAIL();
    } catch (const OffloadError& failure) {
        const auto& space = std::get<OffloadError::InsufficientSpace>(failure.reason());
        EXPECT_EQ(space.needed, 28 * kMiB);
        EXPECT_LE(space.free, 24 * kMiB);
    }
    EXPECT_FALSE(std::filesystem::exists(disk / "session"));
}

TEST_F(DiskThatTakesNoMore, InMidRunStopsWithAClearReasonAndHonestRows) {
    for (const auto* name : {"1", "2", "3"})
        writeFile(card / name, bytesOf(8 * kMiB));
    const auto outcome =
        record.run(request, atFirst<Phase::Copying>([&] { fillUp(disk.path(), 3 * kMiB); }, "2"));
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(
        verdicts(outcome),
        (Verdicts{{"1", "COPY/copied_unverified"}, {"2", "FAIL/failed"}, {"3", "FAIL/failed"}}));
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("there is no room left")));
    EXPECT_LT(std::filesystem::file_size(outcome.sessionRoot / "2"), 8 * kMiB);
}

TEST_F(DiskThatTakesNoMore, BecauseItTurnedReadOnlyHasKeptNothing) {
    auto observer = record.observer();
    // No file is to be written any more, which would tell.
    observer.sessionRootCreated = [&](const auto&) {
        disk.turnReadOnly();
    };
    const auto outcome = CopyEngine::run(request, observer, {});
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("nothing was read back")));
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
            const auto pull = [&] {
                isPulled = true;
                pulled.pull();
            };
            RunRecord record;
            auto observer = record.observer(
                stage == Stage::Copying      ? atFirst<Phase::Copying>(pull, "2")
                : stage == Stage::Verifying  ? atFirst<Phase::Verifying>(pull)
                : stage != Stage::FolderMade ? atFirst<Phase::Scanning>(pull)
                                             : std::function<void(const OffloadPhase&)>());
            observer.sessionRootCreated = [&](const auto&) {
                if (stage == Stage::FolderMade)
                    pull();
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

TEST(OtherVolume, BelowACardOrADiskIsNotTakenForIt) {
    for (const bool isOnCard : {true, false}) {
        SCOPED_TRACE(isOnCard);
        const TemporaryFolder card;
        const TemporaryFolder destination;
        for (const auto* name : {"1", "DCIM/2", "DCIM/3"})
            writeFile(card / name, name);
        RunRecord record;
        std::optional<MountedVolume> other;
        const auto place = isOnCard ? card / "extra" : destination / "session/DCIM";
        const auto mountOnce = [&] {
            if (!other)
                other.emplace(Volume::Ext4, 8 * kMiB, place, "");
        };
        if (isOnCard)
            mountOnce();
        const auto outcome = record.run(requestFor(card.path(), destination.path()),
                                        atFirst<Phase::Copying>(mountOnce, "DCIM/3"));
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        EXPECT_THAT(record.problems, ElementsAre(HasSubstr("another disk is mounted there")));
        if (isOnCard)
            continue;
        auto request = requestFor(card.path(), destination.path());
        request.settings.folderTemplate = "session/DCIM/new";
        const auto inTurkish = [](const std::exception& failure) {
            return describe(failure, L10n(AppLanguage::Turkish));
        };
        EXPECT_THAT(
            [&] { record.run(request); },
            Throws<std::exception>(ResultOf(
                inTurkish,
                place.native() + ": orada başka bir disk bağlı ya da bir bağlantı dışarı çıkıyor")))
            << "a session on the other volume";
    }
}

TEST(DiskWithoutCase, NamesThatBecomeOthersFailTheRun) {
    const std::vector<std::pair<std::vector<const char*>, const char*>> cases = {
        {{"A.txt", "a.txt"}, "volume: bu diskte aynı adla başka bir dosya duruyor"},
        {{"CLIP/1", "clip/2"}, "Two folders of the card are one folder on this disk: clip"},
        {{"A:1.mov"}, "volume: bu disk bu ada ya da işleme izin vermiyor"},
        {{"B?/1"}, "B?: bu disk bu ada ya da işleme izin vermiyor"},
        // Longer than need be, which this driver takes and writes down as others.
        {{"o\xc1\x81x"}, "The disk does not list o"},
        {{"\xc0\xae\xc0\xae/1"}, "The disk does not list "},
    };
    const MountedVolume disk(Volume::ExFat, 64 * kMiB);
    for (const auto& [names, problem] : cases) {
        const TemporaryFolder card;
        for (const auto* name : names)
            writeFile(card / name, name);
        RunRecord record;
        const auto outcome = record.run(requestFor(card.path(), disk.path()));
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        auto texts = record.problems;
        for (const auto& each : outcome.problems)
            texts.push_back(each.text(L10n(AppLanguage::Turkish)));
        EXPECT_THAT(texts, Contains(HasSubstr(problem)));
    }
}

TEST(DiskWithoutCase, AFolderOnTheWayMayBeSpeltInAnotherCase) {
    const MountedVolume disk(Volume::ExFat, 64 * kMiB);
    const TemporaryFolder card;
    std::filesystem::create_directory(disk / "film");
    writeFile(card / "clip.mov", "1");
    auto request = requestFor(card.path(), disk.path());
    request.settings.folderTemplate = "FILM/session";
    EXPECT_EQ(RunRecord().run(request).status, OutcomeStatus::Verified);
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
        const auto outcome = RunRecord().run(requestFor(disk / "card", disk.path()));
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        EXPECT_EQ(outcome.files.at(0).mtime, date);
        struct stat copy {};
        ASSERT_EQ(::stat((outcome.sessionRoot / "a").c_str(), &copy), 0);
        EXPECT_EQ(copy.st_mtim.tv_sec, seconds);
    }
}
