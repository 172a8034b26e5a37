#include "Batch/BatchOfCards.h"
#include "Language/L10n.h"
#include "Platform/Files/FileSystem.h"
#include "Storage/AppDatabase.h"
#include "Storage/UserStore.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

#include <optional>

// What becomes of a batch when its cards, its disks or its archive are pulled, exchanged or full.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto kExt4 = MountedVolume::FileSystem::Ext4;

/// What is said of a card or a disk that is not the one any more that was ticked.
std::string goneSentence(const std::string& name) {
    return name.starts_with("SSD") ? "The disk " + name + " is no longer the one that was chosen."
                                   : "The card " + name + " is no longer there.";
}

} // namespace

TEST_F(BatchOfCards, OnlyWhatWasTickedIsCopied) {
    enum Fate { Stays, Unmounted, Exchanged, NotOpened };
    for (const std::string name : {"A001", "SSD1"}) {
        for (const auto fate : {Stays, Unmounted, Exchanged, NotOpened}) {
            SCOPED_TRACE(name + " " + std::to_string(fate));
            disks = {desk.mountDisk("SSD1")};
            const auto card = desk.mountCard("A001", {});
            const auto place = desk.folder / name;
            MountedVolume ticked(kExt4, 32 << 20, place, "");
            desk.volume(name == "A001" ? card : disks[0]).facts.identity =
                FolderIdentity::at(place);
            start();
            desk.selectCard(card, "CamA");
            std::optional<MountedVolume> other;
            if (fate != Stays)
                ticked.unmount();
            if (fate == Exchanged)
                other.emplace(kExt4, 32 << 20, place, "");
            if (fate == NotOpened && std::filesystem::remove(place))
                std::filesystem::create_symlink(name, place);
            desk.copy();
            const auto& pair = result().pairs.at(0);
            EXPECT_EQ(pair.status, fate == Stays ? OutcomeStatus::Verified : OutcomeStatus::Failed)
                << "an empty card is no failure";
            if (fate == NotOpened) {
                EXPECT_THAT(pair.message, StartsWith(name + " could not be opened: "));
                std::filesystem::remove(place);
            } else if (fate != Stays) {
                EXPECT_EQ(pair.message, goneSentence(name));
                EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), 0);
            }
            clear();
            if (name == "A001")
                std::filesystem::remove_all(desk.folder / "SSD1");
        }
    }
}

TEST_F(BatchOfCards, WhatIsUnmountedWhileItWaitsIsNeverVerified) {
    for (const std::string gone : {"B002", "SSD2"}) {
        SCOPED_TRACE(gone);
        const bool isCard = gone == "B002";
        disks = {desk.mountDisk("SSD1")};
        if (!isCard)
            disks.push_back(desk.mountDisk(gone));
        const auto first = desk.mountCard("A001");
        std::optional<QString> second;
        if (isCard)
            second = desk.mountCard(gone, {});
        std::filesystem::create_directories(desk.folder / gone);
        MountedVolume volume(kExt4, 32 << 20, desk.folder / gone, "");
        writeFile(volume / "B.dat", "b");
        beforeRun([&](int) { volume.pull(); });
        start();
        desk.model().settings()->setEjectAfterSuccess(true);
        desk.selectCard(first, "CamA");
        if (second)
            desk.selectCard(*second, "CamB");
        desk.copy();

        ASSERT_THAT(result().pairs, SizeIs(2));
        EXPECT_EQ(result().pairs[0].status, OutcomeStatus::Verified);
        EXPECT_EQ(result().pairs[1].status, OutcomeStatus::Failed);
        EXPECT_EQ(result().message, goneSentence(gone));
        EXPECT_EQ(runs, 1);
        EXPECT_THAT(desk.ejected, SizeIs(isCard ? 1 : 0)) << "a card that every disk has";
        EXPECT_TRUE(std::filesystem::is_empty(volume.path())) << "beneath the mount point";
        desk.ejected.clear();
        clear();
    }
}

TEST_F(BatchOfCards, ACardStaysWhenADiskThatHasItIsGone) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto card = desk.mountCard("A001");
    MountedVolume volume(kExt4, 32 << 20, desk.folder / "SSD1", "");
    beforeRun([&](int run) {
        if (run == 2)
            volume.pull();
    });
    start();
    desk.model().settings()->setEjectAfterSuccess(true);
    desk.selectCard(card, "CamA");
    desk.copy();
    for (const auto& pair : result().pairs)
        EXPECT_EQ(pair.status, OutcomeStatus::Verified);
    EXPECT_THAT(desk.ejected, IsEmpty());
    EXPECT_THAT(result().ejects,
                ElementsAre(CardEnd{"A001 was not ejected: a disk with its copy is "
                                    "not there any more",
                                    false}));
}

TEST_F(BatchOfCards, WhatGoesBeforeItsReportsKeepsNoOtherTraceAway) {
    for (const std::string gone : {"A001", "SSD1"}) {
        SCOPED_TRACE(gone);
        const bool isCard = gone == "A001";
        disks = {desk.mountDisk("SSD1")};
        const auto card = desk.mountCard("A001", {});
        std::filesystem::create_directories(desk.folder / gone);
        MountedVolume volume(kExt4, 32 << 20, desk.folder / gone, "");
        if (isCard)
            writeFile(volume / "A.dat", "a");
        behindRun([&](const OffloadOutcome& outcome) {
            EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
            volume.pull();
        });
        copy(card);
        const auto& pair = result().pairs.at(0);
        EXPECT_EQ(pair.status, OutcomeStatus::Failed);
        EXPECT_EQ(pair.problems,
                  (std::vector<OffloadProblem>{
                      {isCard ? OffloadProblem::Kind::CardGone : OffloadProblem::Kind::DiskReplaced,
                       gone}}));
        EXPECT_TRUE(std::filesystem::is_empty(volume.path())) << "beneath the mount point";
        EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), isCard ? 1 : 0);
        EXPECT_EQ(linesOfLogWith(pair.problems[0].text(L10n(AppLanguage::English))), 1);
        ASSERT_TRUE(pair.page);
        EXPECT_THAT(readFile(*pair.page), HasSubstr(gone));
        ASSERT_THAT(desk.model().recentSessions(), SizeIs(1));
        EXPECT_EQ(desk.model().recentSessions()[0].status, OutcomeStatus::Failed);
        EXPECT_THAT(openUserStore()->pendingOutbox(), SizeIs(1));
        clear({"user", "SSD1"});
    }
}

TEST_F(BatchOfCards, NoReportsSayMoreThanIsTrueOrLieWhereNobodyLooks) {
    // What becomes of the disk or of the archive, and where that lies.
    enum Fate { DiskFills, ArchiveFills, Pulled, Missing, LeadsOut };
    struct Case {
        Fate fate;
        const char* archive;
        int onDisk;
        int archived;
    };
    for (const auto& [fate, place, onDisk, archived] :
         std::vector<Case>{{DiskFills, "user/documents/SlatewiseDIT", 0, 1},
                           {ArchiveFills, "archive", 1, 1},
                           {Pulled, "archive", 1, 0},
                           {Missing, "archive", 0, 0},
                           {Missing, "SSD1/NAS/archive", 0, 0},
                           {LeadsOut, "SSD1/reports", 0, 0}}) {
        SCOPED_TRACE(place);
        SCOPED_TRACE(fate);
        disks = {desk.mountDisk("SSD1")};
        const auto card = desk.mountCard("A001");
        const auto disk = desk.folder / "SSD1";
        const auto outside = desk.folder / "outside";
        const auto archive = desk.folder / place;
        const bool isBegun = fate != Missing && fate != LeadsOut;
        std::optional<MountedVolume> volume;
        if (isBegun)
            volume.emplace(kExt4, 32 << 20, fate == DiskFills ? disk : archive, "");
        if (fate == LeadsOut) {
            std::filesystem::create_directory(outside);
            std::filesystem::create_directory_symlink(outside, archive);
        }
        behindRun([&, fate = fate](const auto&) {
            if (fate == Pulled)
                return volume->pull();
            // Half a set fits.
            const auto free = FileSystem::volumeCapacity(volume->path()).free;
            writeFile(*volume / "others", bytesOf(static_cast<std::size_t>(free - (40 << 10))));
        });
        start();
        desk.choice = archive;
        if (fate != DiskFills)
            desk.model().reports()->pick();
        desk.selectCard(card, "CamA");
        desk.copy();
        EXPECT_EQ(runs, isBegun);
        EXPECT_THAT(title(), AnyOf(HasSubstr("could not be written"), HasSubstr("are missing in")));
        // Who is refused has no result.
        if (isBegun) {
            EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Failed);
            const auto set = result().pairs[0].page.value().parent_path();
            EXPECT_EQ(reportsIn(set), 7) << "a whole one";
            EXPECT_THAT(readFile(set / "manifest.json"), HasSubstr("\"status\": \"failed\""));
        }
        EXPECT_EQ(reportsIn(disk / "reports"), onDisk);
        const auto sets = reportsIn(archive) - (fate == ArchiveFills ? 1 : 0);
        EXPECT_EQ(sets + reportsIn(outside), archived) << "beside what fills it";
        EXPECT_EQ(std::filesystem::exists(disk / "NAS"), false);
        desk.quit();
        volume.reset();
        clear({"user", "archive", "outside", "SSD1"});
    }
}

TEST_F(BatchOfCards, TheArchiveMayLieOnAShareBelowTheDisk) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    const MountedVolume share(kExt4, 32 << 20, desk.folder / "SSD1/NAS", "");
    std::filesystem::create_directory(share / "archive");
    start();
    desk.choice = share / "archive";
    desk.model().reports()->pick();
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified) << title();
    EXPECT_EQ(reportsIn(share / "archive"), 1);
}
