#include "Batch/BatchOfCards.h"
#include "Language/L10n.h"
#include "Storage/AppDatabase.h"
#include "Storage/UserStore.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

#include <csignal>

// What is looked at before a batch begins, and what it keeps to once it has begun.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(BatchOfCards, LooksBeforeItBegins) {
    disks = {desk.mountDisk("SSD1")};
    const auto first = desk.mountCard("A001");
    const auto second = desk.mountCard("B002");
    start();
    auto& model = desk.model();

    desk.copy();
    EXPECT_EQ(title(), "Failed: Select a card and a destination disk.");

    model.cards()->toggle(first);
    model.cards()->toggle(second);
    model.cards()->focus(first);
    model.units()->tapUnit("CamA");
    model.cards()->focus(first);
    desk.copy();
    EXPECT_EQ(title(), "B002 has no unit yet");
    EXPECT_TRUE(std::holds_alternative<Phase::Failed>(model.batch()->phase())) << "it stays";
    EXPECT_THAT(model.state().cardUnits.cardsNeedingUnit, ElementsAre("dev-B002"));
    EXPECT_EQ(model.state().board.selection(VolumeSide::Card).focused, "dev-B002");
    model.units()->tapUnit("CamB");
    EXPECT_THAT(model.state().cardUnits.cardsNeedingUnit, IsEmpty());

    desk.choice = desk.folder / "A001/Copies";
    std::filesystem::create_directories(*desk.choice);
    model.destinations()->pickFolder();
    Desk::waitUntil(
        [&] { return model.state().board.selected(VolumeSide::Destination).size() == 2; });
    model.cards()->toggle(second);
    model.cards()->focus(second);
    desk.copy();
    EXPECT_EQ(title(), "Failed: " + model.state().l10n().destinationInsideCard("Copies", "A001"));
    EXPECT_EQ(model.state().board.selection(VolumeSide::Card).focused, "dev-B002")
        << "where the next unit goes";
    model.destinations()->remove(model.destinations()->rows().back().volumeID);
    EXPECT_EQ(model.batch()->standing(), BatchControl::Resting) << "what stood against it is gone";

    EXPECT_EQ(runs, 0);
    EXPECT_EQ(linesOfLogWith("Offload not begun: "), 1);
    EXPECT_FALSE(model.batch()->lastResult()) << "nothing was begun";
    EXPECT_FALSE(std::filesystem::exists(desk.folder / "SSD1/reports"));
}

// A share whose server is gone keeps whoever looks at it for as long as it likes.
TEST_F(BatchOfCards, StopIsHeardWhileADiskDoesNotAnswer) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    std::atomic<bool> mayAnswer = false;
    std::atomic<bool> hasAnswered = false;
    desk.surroundings.findObstacle = [&](const auto& plan) {
        mayAnswer.wait(false);
        auto found = BatchObstacle::find(plan);
        hasAnswered = true;
        return found;
    };
    desk.surroundings.patience = std::chrono::milliseconds(700);
    start();
    desk.selectCard(card, "CamA");
    desk.model().batch()->start();
    EXPECT_TRUE(desk.model().batch()->isBusy());
    desk.model().batch()->cancel();
    Desk::waitUntil([&] { return !desk.model().batch()->isBusy(); });
    EXPECT_EQ(title(), "You stopped it. Do not wipe the card; press Copy to begin again.");
    EXPECT_FALSE(desk.model().batch()->lastResult()) << "nothing was begun";
    mayAnswer = true;
    mayAnswer.notify_all();
    Desk::waitUntil([&] { return hasAnswered.load(); });
    auto& batch = *desk.model().batch();
    batch.start();
    Desk::waitUntil([&] { return batch.standing() == BatchControl::Succeeded; });
    EXPECT_EQ(batch.pairs()->rowCount(), 1);
    // What comes to nothing shows no verdict of the batch before, as if it were its own.
    mayAnswer = false;
    hasAnswered = false;
    desk.selectCard(card, "CamA");
    batch.start();
    batch.cancel();
    Desk::waitUntil([&] { return batch.standing() == BatchControl::Failed; });
    EXPECT_FALSE(batch.hasVerdict());
    EXPECT_EQ(batch.advice(), "");
    EXPECT_TRUE(batch.lastOffload().startsWith("Last offload: verified"));
    const auto answer = [&] {
        mayAnswer = true;
        mayAnswer.notify_all();
        Desk::waitUntil([&] { return hasAnswered.load(); });
    };
    answer();
    // Nor is it waited for without end by those who do not stop it.
    mayAnswer = false;
    hasAnswered = false;
    desk.copy();
    EXPECT_EQ(title(),
              "Failed: The reports folder or a disk does not answer. Check the disks, or choose "
              "another reports folder.");
    answer();
}

// Outside the kernel a file system is a program, which may be killed or just not answer.
TEST_F(BatchOfCards, ADeadOrSilentVolumeFailsItsPairWithASentence) {
    enum Moment { Before, DuringRun, BeforeTraces };
    struct Case {
        const char* name;
        int signal;
        Moment moment;
        std::vector<const char*> sentences;
        const char* advice;
    };
    // clang-format off
    const std::vector<Case> cases = {
        {"A001", SIGKILL, Before, {"The card A001 is no longer there."}, "Put the card in again"},
        {"SSD1", SIGKILL, Before, {"The disk SSD1 is no longer the one that was chosen."}, "Connect the disk again"},
        {"A001", SIGSTOP, Before, {"The card A001 does not answer."}, "Put the card in again"},
        {"SSD1", SIGSTOP, Before, {"The disk SSD1 does not answer."}, "Connect the disk again"},
        {"SSD1", SIGKILL, DuringRun, {"The disk SSD1 is no longer the one that was chosen."}, "Connect the disk again"},
        {"SSD1", SIGSTOP, DuringRun, {"Cancelled.", "A001 → SSD1: the card or the disk does not answer."}, "You stopped it."},
        {"SSD1", SIGSTOP, BeforeTraces, {"Stopped while the reports were written: do not rely on them."}, "You stopped it."},
    };
    // clang-format on
    for (const auto& testCase : cases) {
        SCOPED_TRACE(std::string(testCase.name) + " " + std::to_string(testCase.signal));
        disks = {desk.mountDisk("SSD1")};
        const auto card = desk.mountCard("A001", {});
        MountedVolume volume(MountedVolume::FileSystem::ExFat, 32 << 20,
                             desk.folder / testCase.name, "");
        writeFile(desk.folder / "A001/A.dat", bytesOf(4'000'000));
        desk.surroundings.patience = std::chrono::milliseconds(800);
        desk.surroundings.runEngine = [&](const auto& request, auto observer, auto stop) {
            const auto hit = [&] {
                volume.signalItsProgram(testCase.signal);
                if (testCase.signal == SIGSTOP)
                    QMetaObject::invokeMethod(QCoreApplication::instance(),
                                              [&] { desk.model().batch()->cancel(); });
            };
            observer.progress = [&, isHit = false](const OffloadPhase& phase) mutable {
                if (testCase.moment == DuringRun && std::holds_alternative<Phase::Copying>(phase) &&
                    !std::exchange(isHit, true))
                    hit();
            };
            auto outcome = CopyEngine::run(request, observer, stop);
            if (testCase.moment == BeforeTraces)
                hit();
            return outcome;
        };
        start();
        const auto reported = [] {
            return openUserStore()->pendingOutbox().size();
        };
        const auto reportedBefore = reported();
        desk.selectCard(card, "CamA");
        if (testCase.moment == Before)
            volume.signalItsProgram(testCase.signal);
        desk.copy();
        const auto& pair = result().pairs.at(0);
        EXPECT_EQ(pair.status, OutcomeStatus::Failed);
        EXPECT_EQ(pair.sessionRoot.empty(), testCase.moment == Before) << "where it lies";
        std::vector<std::string> sentences = {pair.message};
        for (const auto& problem : pair.problems)
            sentences.push_back(problem.text(L10n(AppLanguage::English)));
        for (const auto* sentence : testCase.sentences)
            EXPECT_THAT(sentences, ::testing::Contains(sentence));
        EXPECT_THAT(desk.model().batch()->advice().toStdString(),
                    ::testing::StartsWith(testCase.advice));
        if (testCase.signal == SIGSTOP)
            volume.signalItsProgram(SIGCONT);
        if (testCase.moment == BeforeTraces)
            Desk::waitUntil([&] { return reported() > reportedBefore; });
        desk.quit();
        desk.volumes.clear();
        volume.pull();
        for (const auto* folder : {"A001", "SSD1"})
            std::filesystem::remove_all(desk.folder / folder);
    }
}

TEST_F(BatchOfCards, KeepsToWhatWasSetWhenTheButtonWasPressed) {
    disks = {desk.mountDisk("SSD1")};
    const auto card = desk.mountCard("A001");
    beforeRun([&](int) {
        onDesk([&] {
            desk.model().setLanguageCode("tr");
            desk.model().pathTemplate()->save("other/{CardName}");
            desk.model().cards()->toggle(card);
        });
    });
    start();
    desk.model().pathTemplate()->save("film/{Ekip}/{Cam}/{CardName}");
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_EQ(result().pairs.at(0).sessionRoot, desk.folder / "SSD1/film/Ekip1/CamA/A001");
    EXPECT_THAT(readFile(result().pairs[0].reportFolder / "Reports_Standart.html"),
                HasSubstr("Slatewise DIT report"))
        << "in the language of the press";
    EXPECT_EQ(title(), "Doğrulandı — 1 dosya, 1 bayt") << "shown in the language of now";
}
