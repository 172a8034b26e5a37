#include "Batch/PairTraces.h"
#include "Batch/BatchOfCards.h"
#include "Batch/PairLists.h"
#include "Platform/Error.h"
#include "Storage/AppDatabase.h"
#include "Storage/UserStore.h"

#include <gmock/gmock.h>

// What a pair leaves behind, and what comes of it when it cannot.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST_F(BatchOfCards, WhatBecomesOfACopyBeforeItsReportsAreLeftIsSeen) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001", {{"A.dat", "a"}});
    std::filesystem::last_write_time(desk.folder / "A001/A.dat",
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::hours(1));
    behindRun([](const OffloadOutcome& outcome) {
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        writeFile(outcome.sessionRoot / "A.dat", "b");
    });
    copy(card);
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Failed);
    const auto* sentence = "The copy of A.dat differs from the card.";
    EXPECT_THAT(title(), HasSubstr(sentence));
    ASSERT_EQ(reportsIn(desk.folder / "SSD1/reports"), 1);
    const auto set = *std::filesystem::directory_iterator(desk.folder / "SSD1/reports");
    EXPECT_THAT(readFile(set.path() / "manifest.json"),
                AllOf(HasSubstr(sentence), Not(HasSubstr("verified\""))));
    EXPECT_EQ(readFile(set.path() / "checksums.sha256"), "");
    EXPECT_EQ(desk.model().recentSessions()[0].status, OutcomeStatus::Failed);
}

TEST_F(BatchOfCards, NoSetStandsAnywhereBeforeAllIsKnown) {
    using Kind = OffloadProblem::Kind;
    start();
    const auto held = [&](const char* name) {
        std::filesystem::create_directory(desk.folder / name);
        return std::make_shared<const RootFolder>(desk.folder / name);
    };
    const auto manifestsIn = [&](const char* root) {
        std::vector<std::string> manifests;
        for (const auto& item : std::filesystem::recursive_directory_iterator(desk.folder / root)) {
            const bool isPassing = item.path().native().find("/.") != std::string::npos;
            if (item.path().filename() == "manifest.json" && !isPassing)
                manifests.push_back(readFile(item.path()));
        }
        return manifests;
    };
    const auto isFailure = HasSubstr("\"status\": \"failed\"");
    using PairTraces::Step;
    // The step at which nobody waits any longer; else the disk takes no set.
    for (const auto step : {std::optional<Step>(), std::optional(Step::Placing),
                            std::optional(Step::Placed), std::optional(Step::Ended)}) {
        SCOPED_TRACE(step ? static_cast<int>(*step) : -1);
        const bool isGivenUp = step.has_value();
        BatchPlan plan;
        BatchPair pair;
        pair.cardFolder = held("A001");
        pair.destinationFolder = held("SSD1");
        pair.archiveFolder = held("archive");
        if (!isGivenUp)
            writeFile(desk.folder / "SSD1/reports", "in the way");
        OffloadOutcome outcome;
        outcome.sessionID = Uuid::random();
        outcome.status = OutcomeStatus::Verified;
        std::vector<Kind> told;
        const auto tell = [&](const OffloadProblem& problem) {
            told.push_back(problem.kind);
            if (step != Step::Ended) {
                EXPECT_THAT(manifestsIn("archive"), IsEmpty());
            }
        };
        PairTraces::Folders folders;
        PairTraces::leave(plan, pair, outcome, nullptr, *openUserStore(), tell, {},
                          {[&](Step at) { return !step || at < *step; },
                           [&](const auto& settled) {
                               folders = settled;
                           }});
        EXPECT_THAT(told,
                    ElementsAre(isGivenUp ? Kind::ReportsNotAwaited : Kind::ReportsNotCopied));
        EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
        EXPECT_THAT(manifestsIn("archive"), ElementsAre(isFailure));
        EXPECT_THAT(manifestsIn("SSD1"), AllOf(SizeIs(isGivenUp ? 1 : 0), Each(isFailure)));
        EXPECT_EQ(folders.shown, folders.inArchive);
        for (const auto* root : {"archive", "SSD1"})
            std::filesystem::remove_all(desk.folder / root);
    }
}

// A look that fails between the run and its traces.
TEST_F(BatchOfCards, AListThatIsNotWrittenSinceTheCardIsGoneIsTold) {
    for (const auto* folder : {"A001", "SSD1"})
        std::filesystem::create_directories(desk.folder / folder);
    BatchPair pair;
    pair.cardFolder = std::make_shared<const RootFolder>(desk.folder / "A001");
    pair.destinationFolder = std::make_shared<const RootFolder>(desk.folder / "SSD1");
    std::filesystem::rename(desk.folder / "A001", desk.folder / "gone");
    OffloadSettings settings;
    settings.writesHashList = true;
    const PairLists lists(settings);
    OffloadOutcome outcome;
    outcome.status = OutcomeStatus::Verified;
    std::vector<OffloadProblem::Kind> told;
    for (int time = 0; time < 2; ++time)
        lists.settle(pair, outcome, [&](const auto& problem) { told.push_back(problem.kind); });
    EXPECT_THAT(told, ElementsAre(OffloadProblem::Kind::CardGone));
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
}

TEST_F(BatchOfCards, TheServiceIsToldWhatBecameOfTheReportsInTheEnd) {
    start();
    for (const auto* folder : {"A001", "SSD1/reports"})
        std::filesystem::create_directories(desk.folder / folder);
    BatchPlan plan;
    BatchPair pair;
    pair.cardFolder = std::make_shared<const RootFolder>(desk.folder / "A001");
    pair.destinationFolder = std::make_shared<const RootFolder>(desk.folder / "SSD1");
    pair.archiveFolder = std::make_shared<const RootFolder>(desk.folder / "SSD1/reports");
    OffloadOutcome outcome;
    outcome.sessionID = Uuid::random();
    outcome.status = OutcomeStatus::Verified;
    // The last moment at which all is well.
    const auto goAway = [&](PairTraces::Step step) {
        if (step == PairTraces::Step::Placing)
            std::filesystem::rename(desk.folder / "SSD1/reports", desk.folder / "SSD1/gone");
        return true;
    };
    PairTraces::leave(plan, pair, outcome, nullptr, *openUserStore(), {}, {}, {goAway});
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_THAT(openUserStore()->pendingOutbox().back().payload,
                AllOf(HasSubstr("\"failed\""), Not(HasSubstr("\"verified\""))));
}

TEST_F(BatchOfCards, WhoStopsWhileTheHistoryIsHeldUpKeepsWhatWasProved) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    const auto store = openUserStore();
    desk.surroundings.openStore = [&] {
        return store;
    };
    std::atomic<bool> isHeld = false;
    std::atomic<bool> mayGo = false;
    std::thread holder;
    behindRun([&](const auto&) {
        holder = std::thread([&] {
            store->enqueueOutbox({"held", [&](const auto& put) {
                                      isHeld = true;
                                      isHeld.notify_all();
                                      mayGo.wait(false);
                                      put("");
                                  }});
        });
        isHeld.wait(false);
    });
    start();
    desk.selectCard(card, "CamA");
    auto& batch = *desk.model().batch();
    batch.start();
    const auto sets = desk.folder / "user/documents/SlatewiseDIT";
    Desk::waitUntil([&] {
        return std::ranges::any_of(FileSystem::entriesIfAny(sets), [](const auto& set) {
            return std::filesystem::exists(set / "manifest.json");
        });
    });
    batch.cancel();
    Desk::waitUntil([&] { return !batch.isBusy(); });
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified);
    EXPECT_THAT(result().pairs[0].problems,
                ElementsAre(Field(&OffloadProblem::kind, OffloadProblem::Kind::SessionNotStored)));
    mayGo = true;
    mayGo.notify_all();
    holder.join();
}

TEST_F(BatchOfCards, ASessionThatCannotBeStoredIsANoteAndWaitsForTheServiceAllTheSame) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    // The same once more is what no store takes.
    behindRun([](const OffloadOutcome& outcome) {
        openUserStore()->save(outcome, outcome.files, "A001", "SSD1", "CamA");
    });
    copy(card);
    EXPECT_EQ(result().pairs.at(0).status, OutcomeStatus::Verified);
    ASSERT_THAT(result().pairs[0].problems, SizeIs(1));
    EXPECT_EQ(result().pairs[0].problems[0].kind, OffloadProblem::Kind::SessionNotStored);
    EXPECT_THAT(openUserStore()->pendingOutbox(), SizeIs(1));
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
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        disks = {desk.mountDisk("SSD1")};
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
        clear({"SSD1", "user", "outside"});
    }
}
