#include "Batch/BatchOfCards.h"
#include "Batch/PairTraces.h"
#include "Language/L10n.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Storage/AppDatabase.h"
#include "Storage/UserStore.h"
#include "support/MountedVolume.h"
#include "support/RecordingServer.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <atomic>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

TEST_F(BatchOfCards, TheFourthOfSixPairsFails) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto first = desk.mountCard("A001");
    const auto second = desk.mountCard("B002", {{"B.mov", "bb"}, {"C.mov", "c"}});
    const auto third = desk.mountCard("C003");
    beforeRun([&](int run) {
        if (run == 4)
            ::mkfifo((desk.folder / "B002/Z.fifo").c_str(), 0600);
    });
    start();
    desk.selectCard(first, "CamA");
    desk.selectCard(second, "CamB");
    desk.selectCard(third, "CamC");
    desk.model().cards()->focus(first);
    desk.copy();

    EXPECT_THAT(labels, ElementsAre("Card 1/3 · Destination 1/2 · CamA · A001 → SSD1",
                                    "Card 1/3 · Destination 2/2 · CamA · A001 → SSD2",
                                    "Card 2/3 · Destination 1/2 · CamB · B002 → SSD1",
                                    "Card 2/3 · Destination 2/2 · CamB · B002 → SSD2"));
    EXPECT_THAT(fractions, ElementsAre(0, 1 / 6.0, 2 / 6.0, 3 / 6.0));
    EXPECT_EQ(result().message,
              "Verification did not finish (B002 → SSD2). Card was left mounted.");
    EXPECT_THAT(title(), ::testing::AllOf(HasSubstr("Z.fifo"),
                                          ::testing::EndsWith("Card was left mounted.")));
    EXPECT_TRUE(desk.model().batch()->standing() == BatchControl::Failed);
    EXPECT_EQ(desk.model().batch()->position(), BatchPosition{});
    ASSERT_THAT(result().pairs.at(3).problems, SizeIs(1));
    EXPECT_THAT(result().pairs[3].problems[0].subject, HasSubstr("Z.fifo"));

    std::vector<std::string_view> statuses;
    for (const auto& pair : result().pairs)
        statuses.push_back(rawValue(pair.status));
    EXPECT_THAT(statuses,
                ElementsAre("verified", "verified", "verified", "failed", "failed", "failed"));
    EXPECT_EQ(runs, 4) << "no pair runs behind a failed one";
    EXPECT_EQ(result().pairs[5].message, "C003 → SSD2 was not begun.");
    // Four sets of reports in the archive, two on each disk; the last is shown all the same.
    EXPECT_EQ(reportsIn(desk.folder / "user/documents/SlatewiseDIT"), 4);
    EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), 2);
    EXPECT_EQ(reportsIn(desk.folder / "SSD2/reports"), 2);
    ASSERT_THAT(desk.opened, SizeIs(1));
    EXPECT_EQ(desk.opened[0].filename(), "Reports_Standart.html");
    EXPECT_THAT(desk.opened[0].native(), HasSubstr("CamB-B002"));
    const auto& sessions = desk.model().recentSessions();
    ASSERT_THAT(sessions, SizeIs(4));
    EXPECT_EQ(sessions[0].status, OutcomeStatus::Failed);
    EXPECT_EQ(sessions[3].cameraLabel, "CamA");
    // The finished card is unticked; the others wait, with their units, for another try.
    EXPECT_THAT(desk.model().state().board.selection(VolumeSide::Card).ids,
                UnorderedElementsAre("dev-B002", "dev-C003"));
    EXPECT_EQ(desk.model().state().board.selection(VolumeSide::Card).focused, "dev-B002");
    EXPECT_EQ(desk.model().state().cardUnits.cameraLabel("dev-B002"), "CamB");
    EXPECT_TRUE(desk.model().batch()->canCopy());
}

TEST_F(BatchOfCards, AGoodEndClearsTheSelectionAndCountsFilesOnce) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto card = desk.mountCard("A001", {{"A.mov", "1234"}, {".DS_Store", "x"}});
    for (const auto& disk : disks)
        desk.volume(disk).facts.freeBytes = 9'000;
    desk.surroundings.measure = [this](const auto&, const auto&) {
        return Measurement{4, 10'000, 9'000 - 2'000 * runs};
    };
    beforeRun([](int) {});
    start();
    desk.selectCard(card, "CamA");
    desk.defaults.setValue("lastDestIDs", "[]");
    desk.copy();
    EXPECT_EQ(desk.defaults.value("lastDestIDs"), R"(["dev-SSD1","dev-SSD2"])");
    EXPECT_THAT(labels, ElementsAre(StartsWith("Card 1/1 · Destination 1/2 · "),
                                    StartsWith("Card 1/1 · Destination 2/2 · ")));
    EXPECT_EQ(desk.model().batch()->phase(), OffloadPhase(Phase::Verified({1, 4, 2})));
    EXPECT_EQ(title(), "Verified — 1 files to 2 disks, 4 bytes");
    EXPECT_EQ(desk.model().state().board.selection(VolumeSide::Card), Selection{});
    EXPECT_EQ(desk.model().state().cardUnits, CardUnits{});
    EXPECT_EQ(readFile(result().pairs[1].sessionRoot / "A.mov"), "1234");
    EXPECT_THAT(desk.ejected, IsEmpty()) << "nobody asked for it";
    Desk::waitUntil([&] { return desk.model().destinations()->rows()[1].subtitle == "5 KB free"; });
}

TEST_F(BatchOfCards, ACardSaysThatItWasOffloadedBefore) {
    disks = {desk.mountDisk("SSD2"), desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.mov", "1234"}, {".DS_Store", "x"}});
    desk.volume(card).facts.volumeUUID = "AAAA";
    start();
    const auto says = [&](const char* text) {
        return [this, text] {
            return desk.model().cards()->rows().back().past.contains(text);
        };
    };
    Desk::waitUntil([&] { return desk.model().cards()->rows().back().subtitle == "4 bytes"; });
    desk.selectCard(card, "CamA");
    desk.copy();
    Desk::waitUntil(says("Offloaded "));
    Desk::waitUntil(says(" → SSD1, SSD2"));
    // The same content in a place that nobody knows.
    std::filesystem::copy(desk.folder / "A001", desk.folder / "copy",
                          std::filesystem::copy_options::recursive);
    const auto time = std::filesystem::last_write_time(desk.folder / "A001/A.mov");
    std::filesystem::last_write_time(desk.folder / "copy/A.mov", time);
    desk.mountCard("copy", {});
    desk.start();
    Desk::waitUntil(says("Offloaded "));
    desk.unmount("dev-copy");
    writeFile(desk.folder / "A001/B.mov", "5");
    desk.start();
    Desk::waitUntil(says(", differs from what would be copied now → SSD1, SSD2"));
    // Another card with as many bytes.
    std::filesystem::remove(desk.folder / "A001/B.mov");
    std::filesystem::last_write_time(desk.folder / "A001/A.mov", time + std::chrono::seconds(2));
    desk.volume(card).facts.volumeUUID = "BBBB";
    auto& database = *desk.model().state().database;
    const auto isKnown = [&] {
        return PastOffload::find(database, desk.volume(card), 4,
                                 desk.model().state().settings.skipNames())
            .has_value();
    };
    EXPECT_FALSE(isKnown());
    // What nobody could look into may be new, and a copy that is known as bad is none.
    std::filesystem::last_write_time(desk.folder / "A001/A.mov", time);
    EXPECT_TRUE(isKnown());
    const auto clips = desk.folder / "A001/CLIPS";
    std::filesystem::create_directory(clips);
    std::filesystem::permissions(desk.folder.path(), std::filesystem::perms::all);
    for (const bool isReadable : {true, false}) {
        using std::filesystem::perms;
        std::filesystem::permissions(clips, isReadable ? perms::all : perms::none);
        // Root reads every folder: this thread looks through the eyes of somebody else.
        constexpr uid_t kNobody = 65534;
        ::setfsuid(kNobody);
        EXPECT_EQ(isKnown(), isReadable);
        ::setfsuid(::geteuid());
    }
    std::filesystem::permissions(clips, std::filesystem::perms::all);
    const auto check = [&](int differences, const std::string& failure) {
        for (const auto& session : database.history())
            database.recordCheck(
                session.session.id,
                {.checkedAt = Clock::now(), .differences = differences, .failure = failure});
    };
    check(1, "");
    EXPECT_FALSE(isKnown());
    check(0, "the disk is away");
    EXPECT_FALSE(isKnown()) << "nobody has looked at it again";
    check(0, "");
    EXPECT_TRUE(isKnown());
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
        MountedVolume volume(MountedVolume::FileSystem::Ext4, 32 << 20, desk.folder / gone, "");
        writeFile(volume / "B.mov", "b");
        runs = 0;
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
        EXPECT_EQ(result().message, isCard ? "The card B002 is no longer there."
                                           : "The disk SSD2 is no longer the one that was chosen.");
        EXPECT_EQ(runs, 1);
        EXPECT_THAT(desk.ejected, SizeIs(isCard ? 1 : 0)) << "a card that every disk has";
        EXPECT_TRUE(std::filesystem::is_empty(volume.path())) << "beneath the mount point";
        desk.ejected.clear();
        desk.quit();
        desk.volumes.clear();
    }
}

TEST_F(BatchOfCards, OnlyWhatWasTickedIsCopied) {
    enum Fate { Stays, Unmounted, Exchanged, NotOpened };
    for (const std::string name : {"A001", "SSD1"}) {
        for (const auto fate : {Stays, Unmounted, Exchanged, NotOpened}) {
            SCOPED_TRACE(name + " " + std::to_string(fate));
            disks = {desk.mountDisk("SSD1")};
            const auto card = desk.mountCard("A001", {});
            const auto place = desk.folder / name;
            MountedVolume ticked(MountedVolume::FileSystem::Ext4, 32 << 20, place, "");
            desk.volume(name == "A001" ? card : disks[0]).facts.identity =
                FolderIdentity::at(place);
            start();
            desk.selectCard(card, "CamA");
            std::optional<MountedVolume> other;
            if (fate != Stays)
                ticked.unmount();
            if (fate == Exchanged)
                other.emplace(MountedVolume::FileSystem::Ext4, 32 << 20, place, "");
            if (fate == NotOpened && std::filesystem::remove(place))
                std::filesystem::create_symlink(name, place);
            desk.copy();
            const auto& pair = result().pairs.at(0);
            if (fate == Stays) {
                EXPECT_EQ(pair.status, OutcomeStatus::Verified) << "an empty card is no failure";
            } else if (fate == NotOpened) {
                EXPECT_THAT(pair.message, StartsWith(name + " could not be opened: "));
                std::filesystem::remove(place);
            } else {
                EXPECT_EQ(pair.status, OutcomeStatus::Failed);
                EXPECT_EQ(pair.message,
                          name == "A001" ? "The card A001 is no longer there."
                                         : "The disk SSD1 is no longer the one that was chosen.");
                EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), 0);
            }
            desk.quit();
            desk.volumes.clear();
            if (name == "A001")
                std::filesystem::remove_all(desk.folder / "SSD1");
        }
    }
}

TEST_F(BatchOfCards, WhatGoesBeforeItsReportsKeepsNoOtherTraceAway) {
    for (const std::string gone : {"A001", "SSD1"}) {
        SCOPED_TRACE(gone);
        const bool isCard = gone == "A001";
        disks = {desk.mountDisk("SSD1")};
        const auto card = desk.mountCard("A001", {});
        std::filesystem::create_directories(desk.folder / gone);
        MountedVolume volume(MountedVolume::FileSystem::Ext4, 32 << 20, desk.folder / gone, "");
        if (isCard)
            writeFile(volume / "A.mov", "a");
        desk.surroundings.runEngine = [&](const auto& request, const auto& observer, auto stop) {
            auto outcome = CopyEngine::run(request, observer, stop);
            EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
            volume.pull();
            return outcome;
        };
        start();
        desk.selectCard(card, "CamA");
        desk.copy();
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
        desk.quit();
        desk.volumes.clear();
        std::filesystem::remove_all(desk.folder / "user");
        std::filesystem::remove_all(desk.folder / "SSD1");
    }
}

TEST_F(BatchOfCards, WhatBecomesOfACopyBeforeItsReportsAreLeftIsSeen) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.mov", "a"}});
    std::filesystem::last_write_time(desk.folder / "A001/A.mov",
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::hours(1));
    desk.surroundings.runEngine = [&](const auto& request, const auto& observer, auto stop) {
        auto outcome = CopyEngine::run(request, observer, stop);
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        writeFile(outcome.sessionRoot / "A.mov", "b");
        return outcome;
    };
    start();
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Failed);
    const auto* sentence = "The copy of A.mov differs from the card.";
    EXPECT_THAT(title(), HasSubstr(sentence));
    ASSERT_EQ(reportsIn(desk.folder / "SSD1/reports"), 1);
    const auto set = *std::filesystem::directory_iterator(desk.folder / "SSD1/reports");
    EXPECT_THAT(readFile(set.path() / "manifest.json"),
                AllOf(HasSubstr(sentence), Not(HasSubstr("verified\""))));
    EXPECT_EQ(readFile(set.path() / "checksums.sha256"), "");
    EXPECT_EQ(desk.model().recentSessions()[0].status, OutcomeStatus::Failed);
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
            volume.emplace(MountedVolume::FileSystem::Ext4, 32 << 20,
                           fate == DiskFills ? disk : archive, "");
        if (fate == LeadsOut) {
            std::filesystem::create_directory(outside);
            std::filesystem::create_directory_symlink(outside, archive);
        }
        runs = 0;
        desk.surroundings.runEngine = [&, fate = fate](const auto& request, const auto& observer,
                                                       auto stop) {
            ++runs;
            auto outcome = CopyEngine::run(request, observer, stop);
            if (fate == Pulled) {
                volume->pull();
                return outcome;
            }
            // Half a set fits.
            const auto free = FileSystem::volumeCapacity(volume->path()).free;
            writeFile(*volume / "others", bytesOf(static_cast<std::size_t>(free - (40 << 10))));
            return outcome;
        };
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
        desk.volumes.clear();
        volume.reset();
        for (const auto* name : {"user", "archive", "outside", "SSD1"})
            std::filesystem::remove_all(desk.folder / name);
    }
}

TEST_F(BatchOfCards, ReportsThatCannotBeTakenBackAreToldOf) {
    using Kind = OffloadProblem::Kind;
    start();
    BatchPlan plan;
    BatchPair pair;
    const auto held = [&](const char* name) {
        std::filesystem::create_directory(desk.folder / name);
        return std::make_shared<const RootFolder>(desk.folder / name);
    };
    pair.cardFolder = held("A001");
    pair.destinationFolder = held("SSD1");
    pair.archiveFolder = held("archive");
    writeFile(desk.folder / "SSD1/reports", "in the way");
    OffloadOutcome outcome;
    outcome.sessionID = Uuid::random();
    outcome.status = OutcomeStatus::Verified;
    std::vector<Kind> told;
    const auto folders =
        PairTraces::leave(plan, pair, outcome, nullptr, *openUserStore(),
                          [&](const OffloadProblem& problem) {
                              told.push_back(problem.kind);
                              if (problem.kind != Kind::ReportsNotCopied)
                                  return;
                              // The set in the archive says "verified", and is in somebody else's
                              // hands from now on.
                              const auto set =
                                  *std::filesystem::directory_iterator(desk.folder / "archive");
                              std::filesystem::remove(set.path() / "inventory.csv");
                              std::filesystem::create_directory(set.path() / "inventory.csv");
                          },
                          {});
    EXPECT_THAT(told, ElementsAre(Kind::ReportsNotCopied, Kind::ReportsOutdated));
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(folders.shown, "");
}

TEST_F(BatchOfCards, TheArchiveMayLieOnAShareBelowTheDisk) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    const MountedVolume share(MountedVolume::FileSystem::Ext4, 32 << 20, desk.folder / "SSD1/NAS",
                              "");
    std::filesystem::create_directory(share / "archive");
    beforeRun([](int) {});
    start();
    desk.choice = share / "archive";
    desk.model().reports()->pick();
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified) << title();
    EXPECT_EQ(reportsIn(share / "archive"), 1);
}

TEST_F(BatchOfCards, ASessionThatCannotBeStoredIsANoteAndWaitsForTheServiceAllTheSame) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    desk.surroundings.runEngine = [&](const auto& request, const auto& observer, auto stop) {
        auto outcome = CopyEngine::run(request, observer, stop);
        // The same once more is what no store takes.
        openUserStore()->save(outcome, outcome.files, "A001", "SSD1", "CamA");
        return outcome;
    };
    start();
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified);
    ASSERT_THAT(result().pairs[0].problems, SizeIs(1));
    EXPECT_EQ(result().pairs[0].problems[0].kind, OffloadProblem::Kind::SessionNotStored);
    EXPECT_THAT(openUserStore()->pendingOutbox(), SizeIs(1));
}

TEST_F(BatchOfCards, OnePairHasNoLabelAndHashingCopiesNothing) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.mov", "1"}, {"B.mov", "2"}});
    start();
    desk.model().settings()->setVerifyOnly(true);
    desk.model().settings()->setEjectAfterSuccess(true);
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_THAT(desk.ejected, IsEmpty()) << "it is still to be copied";
    EXPECT_THAT(labels, IsEmpty());
    EXPECT_EQ(desk.model().batch()->phase(), OffloadPhase(Phase::Hashed{2}));
    EXPECT_EQ(reportsIn(desk.folder / "SSD1"), 1) << "reports alone";
    EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), 1);
    EXPECT_EQ(desk.model().recentSessions().size(), 1u);
    EXPECT_THAT(openUserStore()->pendingOutbox(), SizeIs(1));
}

TEST_F(BatchOfCards, ACardIsEjectedAfterItsLastPairOnly) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const std::vector cards = {desk.mountCard("A000"), desk.mountCard("A001"),
                               desk.mountCard("B002")};
    std::vector<std::size_t> ejectedBefore;
    beforeRun([&](int run) {
        ejectedBefore.push_back(desk.ejected.size());
        if (run == 6)
            ::mkfifo((desk.folder / "B002/Z.fifo").c_str(), 0600);
    });
    desk.surroundings.eject = [this](const auto& mountPoint) -> DiskUtilClient::Ejected {
        desk.ejected.push_back(mountPoint);
        if (mountPoint.filename() == "A000")
            return {};
        throw DiskUtilClient::EjectError(mountPoint, 1, "busy");
    };
    start();
    desk.model().settings()->setEjectAfterSuccess(true);
    for (const auto& card : cards)
        desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_THAT(ejectedBefore, ElementsAre(0, 0, 1, 1, 2, 2));
    EXPECT_THAT(desk.ejected, ElementsAre(desk.folder / "A000", desk.folder / "A001"))
        << "not the card that failed";
    EXPECT_THAT(title(), HasSubstr("Z.fifo")) << "a failed eject changes nothing";
    EXPECT_THAT(title(),
                HasSubstr("\nA000 is unmounted, safe to pull. A001 was not ejected: the system "));
    EXPECT_EQ(linesOfLogWith("Not ejected: A001: busy"), 1);
    const auto& batch = *desk.model().batch();
    for (const auto& told : {batch.news().join('\n'), batch.report()})
        EXPECT_EQ(told.count("safe to pull"), 1) << told.toStdString();
}

TEST_F(BatchOfCards, AnEjectThatDoesNotHappenIsTold) {
    for (const bool isGone : {false, true}) {
        SCOPED_TRACE(isGone);
        // Its messages are sent when the copy is told as proved, and before the eject.
        const RecordingServer service([&](const auto& request, auto) {
            if (isGone && request.line.find("session/complete") != std::string::npos)
                std::filesystem::rename(desk.folder / "A001", desk.folder / "pulled");
            return WireAnswer::of(200);
        });
        Desk::leaveServiceProfile(service.url());
        disks = {desk.mountDisk("SSD1")};
        const auto card = desk.mountCard("A001");
        std::atomic<bool> isEjecting = false;
        std::atomic<bool> mayEnd = false;
        std::atomic<bool> hasEnded = false;
        desk.surroundings.eject = [&](const auto&) {
            isEjecting = true;
            while (!mayEnd)
                std::this_thread::yield();
            hasEnded = true;
            return DiskUtilClient::Ejected{};
        };
        start();
        auto& batch = *desk.model().batch();
        desk.model().settings()->setEjectAfterSuccess(true);
        desk.selectCard(card, "CamA");
        batch.start();
        if (!isGone) {
            Desk::waitUntil([&] { return isEjecting.load(); });
            batch.cancel();
        }
        Desk::waitUntil([&] { return !batch.isBusy(); });
        EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified);
        EXPECT_EQ(isEjecting, !isGone);
        EXPECT_THAT(title(), HasSubstr(isGone ? "A001 was not ejected: it is not there any more"
                                              : "A001 may or may not be ejected yet: stopped"));
        mayEnd = true;
        Desk::waitUntil([&] { return isGone || hasEnded; });
        desk.quit();
        desk.volumes.clear();
    }
}

TEST_F(BatchOfCards, AFailedRunOrTraceEndsTheBatchWithItsReason) {
    struct Case {
        const char* what;
        std::function<void(int)> before;
        const char* message;
        int sessions;
        int archived;
        int onDisk;
    };
    const auto blockFolder = [&](const char* name) {
        return [this, name](int) {
            std::filesystem::remove_all(desk.folder / name);
            writeFile(desk.folder / name, "in the way");
        };
    };
    const auto leadOutside = [&](const char* name) {
        return [this, name](int) {
            std::filesystem::create_directories((desk.folder / name).parent_path());
            std::filesystem::create_directories(desk.folder / "outside");
            std::filesystem::create_directory_symlink(desk.folder / "outside", desk.folder / name);
        };
    };
    const std::vector<Case> cases = {
        {"no folder for the session", blockFolder("SSD1/film"), "SSD1/film", 0, 0, 0},
        {"nothing of the run", [](int) { throw Error("odd"); }, "Failed: odd", 0, 0, 0},
        {"no reports on the disk", blockFolder("SSD1/reports"), "written to SSD1", 1, 1, 0},
        {"reports lead elsewhere", leadOutside("SSD1/reports"), "written to SSD1", 1, 1, 0},
        {"no archive", blockFolder("user/documents"), "user/documents", 1, 0, 1},
    };
    disks = {desk.mountDisk("SSD1")};
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        for (const auto* name : {"SSD1", "user", "outside"})
            std::filesystem::remove_all(desk.folder / name);
        std::filesystem::create_directory(desk.folder / "SSD1");
        desk.volumes.resize(1);
        const auto card = desk.mountCard("A001");
        beforeRun(testCase.before);
        start();
        desk.model().pathTemplate()->save("film/{CardName}");
        desk.selectCard(card, "CamA");
        desk.copy();
        EXPECT_THAT(title(), HasSubstr(testCase.message));
        EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Failed);
        const auto& sessions = desk.model().recentSessions();
        ASSERT_THAT(sessions, SizeIs(testCase.sessions));
        if (testCase.sessions == 1) {
            EXPECT_EQ(sessions[0].status, OutcomeStatus::Failed);
            EXPECT_THAT(readFile(*result().pairs[0].page), HasSubstr("could not be written"));
        }
        EXPECT_EQ(reportsIn(desk.folder / "user/documents/SlatewiseDIT"), testCase.archived);
        EXPECT_EQ(reportsIn(desk.folder / "SSD1/reports"), testCase.onDisk);
        EXPECT_EQ(reportsIn(desk.folder / "outside"), 0);
        EXPECT_TRUE(desk.model().state().board.selection(VolumeSide::Card).contains("dev-A001"));
    }
}

TEST_F(BatchOfCards, CancelsBeforeInAndBehindARun) {
    enum Moment {
        BeforeTheRun,
        WhileCopying,
        WhileReporting,
        /// When a copy that somebody has touched is to be read once more.
        WhileReadingAgain
    };
    struct Case {
        Moment moment;
        const char* message;
        int sessions;
    };
    // A run that has begun with a file has rows to tell of it.
    const std::vector<Case> cases = {
        {BeforeTheRun, "Cancelled.", 0},
        {WhileCopying, "Verification did not finish", 1},
        {WhileReporting, "Cancelled.", 1},
        {WhileReadingAgain, "Verification did not finish", 1},
    };
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.moment);
        std::filesystem::remove_all(desk.folder / "user");
        desk.volumes.resize(2);
        const auto card = desk.mountCard("A001", {{"A.mov", bytesOf(8'000'000)}});
        // Held up at the moment in question until the button's wish has come.
        std::atomic<bool> isCancelled = false;
        const auto holdUp = [&] {
            QMetaObject::invokeMethod(QCoreApplication::instance(), [&] {
                desk.model().batch()->cancel();
                isCancelled = true;
            });
            while (!isCancelled)
                std::this_thread::yield();
        };
        desk.surroundings.runEngine = [&](const auto& request, auto observer, auto stop) {
            if (testCase.moment == BeforeTheRun)
                holdUp();
            auto progress = observer.progress;
            observer.progress = [&, progress](const OffloadPhase& phase) {
                progress(phase);
                if (testCase.moment == WhileCopying && !isCancelled &&
                    std::holds_alternative<Phase::Copying>(phase))
                    holdUp();
            };
            auto outcome = CopyEngine::run(request, observer, stop);
            if (testCase.moment == WhileReadingAgain) {
                // The kernel's clock for dates is a coarse one.
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                ::chmod((outcome.sessionRoot / "A.mov").c_str(), 0600);
            }
            if (testCase.moment >= WhileReporting)
                holdUp();
            return outcome;
        };
        start();
        desk.selectCard(card, "CamA");
        desk.copy();
        EXPECT_TRUE(isCancelled);
        const auto& phase = std::get<Phase::Failed>(desk.model().batch()->phase());
        EXPECT_THAT(phase.message, StartsWith(testCase.message));
        EXPECT_EQ(title(), "Failed: Cancelled.") << "whoever stopped it is told so";
        const std::string ended = testCase.moment == WhileReporting ? "SSD2" : "SSD1";
        EXPECT_EQ(linesOfLogWith("Offload failed card=A001 dest=" + ended), 1);
        EXPECT_THAT(desk.model().recentSessions(), SizeIs(testCase.sessions));
        EXPECT_EQ(result().pairs.at(1).status, OutcomeStatus::Failed)
            << "the second disk is not begun";
        EXPECT_TRUE(desk.model().state().board.selection(VolumeSide::Card).contains("dev-A001"));
        EXPECT_FALSE(desk.model().batch()->isBusy());
    }
}

TEST_F(BatchOfCards, MayOutliveItsModelAndTheNextStartSaysWhatWasLeftWhere) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto card = desk.mountCard("A001", {{"A.mov", bytesOf(4'000'000)}});
    std::atomic<bool> isRunning = false;
    std::atomic<bool> mayGoOn = false;
    // The batch holds it to its end.
    std::weak_ptr<AppDatabase> store;
    desk.surroundings.openStore = [&] {
        const auto opened = openUserStore();
        store = opened;
        return opened;
    };
    desk.surroundings.runEngine = [&](const auto& request, const auto& observer, auto stop) {
        observer.sessionRootCreated(desk.folder / "SSD1/2026-03-01/A001");
        isRunning = true;
        while (!mayGoOn)
            std::this_thread::yield();
        return CopyEngine::run(request, observer, stop);
    };
    start();
    desk.selectCard(card, "CamA");
    desk.model().batch()->start();
    const auto leftover = [&] {
        return desk.defaults.value("unfinishedOffload").value_or("");
    };
    Desk::waitUntil([&] { return isRunning && leftover().find("2026") != std::string::npos; });
    desk.quit();
    mayGoOn = true;
    Desk::waitUntil([&] { return store.expired(); });
    EXPECT_FALSE(std::filesystem::exists(desk.folder / "SSD2/reports")) << "it was asked to stop";

    desk.surroundings.findObstacle = [](const auto&) {
        return std::optional<std::string>("no");
    };
    start();
    EXPECT_EQ(desk.model().batch()->lastOffload().toStdString(),
              "The last offload was cut off: A001 → SSD1. An unfinished copy lies in " +
                  (desk.folder / "SSD1/2026-03-01/A001").native());
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_NE(leftover(), "") << "one that was refused left nothing";
    EXPECT_THAT(desk.model().batch()->lastOffload().toStdString(), StartsWith("The last offload"));
    desk.surroundings.findObstacle = BatchObstacle::find;
    desk.surroundings.runEngine = CopyEngine::run;
    start();
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(leftover(), "") << "no news after the next one";
}
