#include "Batch/BatchOfCards.h"
#include "Platform/Error.h"
#include "Storage/AppDatabase.h"
#include "Storage/UserStore.h"
#include "support/Offloads.h"
#include "support/RecordingServer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <latch>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <tuple>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST_F(BatchOfCards, TheFourthOfSixPairsFails) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto first = desk.mountCard("A001");
    const auto second = desk.mountCard("B002", {{"B.dat", "bb"}, {"C.dat", "c"}});
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
    EXPECT_THAT(title(), AllOf(HasSubstr("Z.fifo"), EndsWith("Card was left mounted.")));
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
    EXPECT_TRUE(std::filesystem::is_directory(result().pairs[3].sessionRoot));
    EXPECT_EQ(result().pairs[5].sessionRoot, "");
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
    const auto card = desk.mountCard("A001", {{"A.dat", "1234"}, {".DS_Store", "x"}});
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
    EXPECT_EQ(readFile(result().pairs[1].sessionRoot / "A.dat"), "1234");
    EXPECT_THAT(desk.ejected, IsEmpty()) << "nobody asked for it";
    Desk::waitUntil([&] { return desk.model().destinations()->rows()[1].subtitle == "5 KB free"; });
}

TEST_F(BatchOfCards, ACardSaysThatItWasOffloadedBefore) {
    disks = {desk.mountDisk("SSD2"), desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.dat", "1234"}, {".DS_Store", "x"}});
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
    const auto time = std::filesystem::last_write_time(desk.folder / "A001/A.dat");
    std::filesystem::last_write_time(desk.folder / "copy/A.dat", time);
    desk.mountCard("copy", {});
    desk.start();
    Desk::waitUntil(says("Offloaded "));
    desk.unmount("dev-copy");
    writeFile(desk.folder / "A001/B.dat", "5");
    desk.start();
    Desk::waitUntil(says("Differs from offload of "));
    EXPECT_TRUE(says(" → SSD1, SSD2")());
    // Another card with as many bytes.
    std::filesystem::remove(desk.folder / "A001/B.dat");
    std::filesystem::last_write_time(desk.folder / "A001/A.dat", time + std::chrono::seconds(2));
    desk.volume(card).facts.volumeUUID = "BBBB";
    auto& database = *desk.model().state().database;
    const auto isKnown = [&] {
        return PastOffload::find(database, desk.volume(card), 4,
                                 desk.model().state().settings.skipNames())
            .has_value();
    };
    EXPECT_FALSE(isKnown());
    // What nobody could look into may be new, and a copy that is known as bad is none.
    std::filesystem::last_write_time(desk.folder / "A001/A.dat", time);
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

TEST_F(BatchOfCards, OnePairHasNoLabelAndHashingCopiesNothing) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.dat", "1"}, {"B.dat", "2"}});
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
    EXPECT_THAT(title(), EndsWith("\nA000 is unmounted, safe to pull."));
    EXPECT_TRUE(desk.model().batch()->doNotPull().startsWith("A001 was not ejected: the system "));
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
        std::latch mayEnd(1);
        std::atomic<bool> hasEnded = false;
        desk.surroundings.eject = [&](const auto&) {
            // The disk with the archive may be away by the time its page is to be opened.
            std::filesystem::remove_all(desk.folder / "user/documents/SlatewiseDIT");
            isEjecting = true;
            mayEnd.wait();
            hasEnded = true;
            return DiskUtilClient::Ejected{};
        };
        start();
        auto& batch = *desk.model().batch();
        bool isFinished = false;
        QObject::connect(&batch, &BatchControl::finished, [&] { isFinished = true; });
        desk.model().settings()->setEjectAfterSuccess(true);
        desk.selectCard(card, "CamA");
        batch.start();
        if (!isGone) {
            Desk::waitUntil([&] { return isEjecting.load(); });
            batch.cancel();
        }
        Desk::waitUntil([&] { return isFinished; });
        EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified);
        EXPECT_EQ(isEjecting, !isGone);
        EXPECT_THAT(desk.opened, SizeIs(isGone ? 1 : 0)) << "no page that is gone";
        EXPECT_THAT(batch.doNotPull().toStdString(),
                    StartsWith(isGone ? "A001 was not ejected: it is not there any more"
                                      : "A001 may or may not be ejected yet: stopped"));
        mayEnd.count_down();
        Desk::waitUntil([&] { return isGone || hasEnded; });
        clear();
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
    // A run that has begun with a file has rows to tell of it, in one session.
    const std::tuple<Moment, const char*, int> cases[] = {
        {BeforeTheRun, "Cancelled.", 0},
        {WhileCopying, "Verification did not finish", 1},
        {WhileReporting, "Cancelled.", 1},
        {WhileReadingAgain, "The copy of A.dat could not be read back: it was touched", 1},
    };
    for (const auto& [moment, message, sessions] : cases) {
        SCOPED_TRACE(moment);
        disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
        const auto card = desk.mountCard("A001", {{"A.dat", bytesOf(8'000'000)}});
        // Held up at the moment in question until the button's wish has come.
        std::atomic<bool> isCancelled = false;
        const auto holdUp = [&] {
            onDesk([&] { desk.model().batch()->cancel(); });
            isCancelled = true;
        };
        desk.surroundings.runEngine = [&, moment = moment](const auto& request, auto observer,
                                                           auto stop) {
            if (moment == BeforeTheRun)
                holdUp();
            if (moment == WhileCopying)
                observer.progress = [progress = observer.progress,
                                     hold = atFirst<Phase::Copying>(holdUp)](const auto& phase) {
                    progress(phase);
                    hold(phase);
                };
            auto outcome = CopyEngine::run(request, observer, stop);
            if (moment == WhileReadingAgain)
                touchRights(outcome.sessionRoot / "A.dat");
            if (moment >= WhileReporting)
                holdUp();
            return outcome;
        };
        copy(card);
        EXPECT_TRUE(isCancelled);
        const auto& phase = std::get<Phase::Failed>(desk.model().batch()->phase());
        EXPECT_THAT(phase.message, StartsWith(message));
        EXPECT_EQ(title(), "Failed: Cancelled.") << "whoever stopped it is told so";
        const std::string ended = moment == WhileReporting ? "SSD2" : "SSD1";
        EXPECT_EQ(linesOfLogWith("Offload failed card=A001 dest=" + ended), 1);
        EXPECT_THAT(desk.model().recentSessions(), SizeIs(sessions));
        if (moment == WhileCopying) {
            const auto page = result().pairs.at(0).page;
            ASSERT_TRUE(page);
            EXPECT_THAT(readFile(page->parent_path() / "manifest.json"),
                        HasSubstr("Stopped by the user"))
                << "whoever reads it was not there";
        }
        EXPECT_EQ(result().pairs.at(1).status, OutcomeStatus::Failed)
            << "the second disk is not begun";
        EXPECT_TRUE(desk.model().state().board.selection(VolumeSide::Card).contains("dev-A001"));
        EXPECT_FALSE(desk.model().batch()->isBusy());
        clear({"user"});
    }
}

TEST_F(BatchOfCards, MayOutliveItsModelAndTheNextStartSaysWhatWasLeftWhere) {
    disks = {desk.mountDisk("SSD1"), desk.mountDisk("SSD2")};
    const auto card = desk.mountCard("A001", {{"A.dat", bytesOf(4'000'000)}});
    std::atomic<bool> isRunning = false;
    std::latch mayGoOn(1);
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
        mayGoOn.wait();
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
    mayGoOn.count_down();
    Desk::waitUntil([&] { return store.expired(); });
    EXPECT_FALSE(std::filesystem::exists(desk.folder / "SSD2/reports")) << "it was asked to stop";

    desk.surroundings.findObstacle = [](const auto&) {
        return std::optional<std::string>("no");
    };
    start();
    EXPECT_EQ(desk.model().batch()->lastOffload().toStdString(),
              "The last offload was cut off: A001 → SSD1. Do not wipe the card. An unfinished "
              "copy lies in " +
                  (desk.folder / "SSD1/2026-03-01/A001").native());
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_NE(leftover(), "") << "one that was refused left nothing";
    EXPECT_THAT(desk.model().batch()->lastOffload().toStdString(), StartsWith("The last offload"));
    desk.surroundings.findObstacle = BatchObstacle::find;
    desk.surroundings.runEngine = CopyEngine::run;
    copy(card);
    EXPECT_EQ(leftover(), "") << "no news after the next one";
}
