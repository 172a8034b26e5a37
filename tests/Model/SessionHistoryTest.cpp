#include "Model/History/SessionHistory.h"

#include "Language/L10n.h"
#include "support/Desk.h"
#include "support/Files.h"
#include "support/MappedFile.h"
#include "support/MountedVolume.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>

using namespace slatewise;
using namespace slatewise::test;

namespace {

/// Two cards that were copied to one disk.
class SessionHistoryTest : public ::testing::Test {
protected:
    void copy() {
        const auto disk = desk.mountDisk("SSD1");
        const auto cards = {desk.mountCard("A001", {{"a.dat", "a"}, {"b.dat", "b"}}),
                            desk.mountCard("B002")};
        desk.start();
        const auto& chosen = desk.model().state().board.selection(VolumeSide::Destination);
        if (!chosen.contains(disk.toStdString()))
            desk.model().destinations()->toggle(disk);
        for (const auto& card : cards)
            desk.selectCard(card, "CamA");
        desk.copy();
        present();
    }

    void present(int sessions = 2) {
        history = desk.model().history();
        history->setPresented(true);
        Desk::waitUntil([&] { return history->rowCount() == sessions; });
    }

    void chooseOnly(const char* search) {
        history->setSearch(search);
        ASSERT_EQ(history->rowCount(), 1);
        history->choose(history->rows()[0].sessionID);
    }

    BatchControl::Standing readAgain() {
        bool isStored = false;
        const auto stored =
            QObject::connect(history, &SessionHistory::read, [&] { isStored = true; });
        history->verifyAgain();
        EXPECT_TRUE(history->check()->title().endsWith("Reading the lists…"));
        Desk::waitUntil([&] { return isStored; });
        QObject::disconnect(stored);
        return history->check()->standing();
    }

    std::filesystem::path rootOfChosen() {
        history->showFolder();
        Desk::waitUntil([&] { return !desk.shown.empty(); });
        return desk.shown.back();
    }

    Desk desk;
    SessionHistory* history = nullptr;
};

} // namespace

TEST_F(SessionHistoryTest, FindsSessionsAndReadsTheirCopiesAgain) {
    copy();
    history->setSearch("nothing");
    EXPECT_EQ(history->rowCount(), 0);
    history->setSearch("cama a001");
    ASSERT_EQ(history->rowCount(), 1);
    EXPECT_EQ(history->rows()[0].name, "A001 → SSD1");
    EXPECT_TRUE(history->rows()[0].isVerified);
    EXPECT_TRUE(history->rows()[0].check.isEmpty());

    history->verifyAgain();
    EXPECT_FALSE(history->check()->isBusy()) << "nothing is chosen";
    chooseOnly("cama a001");
    EXPECT_TRUE(history->wasCopied());
    EXPECT_EQ(readAgain(), BatchControl::Succeeded);
    EXPECT_TRUE(history->rows()[0].isCheckGood);
    history->showReport();
    history->showFolder();
    Desk::waitUntil([&] { return desk.shown.size() == 1 && desk.opened.size() == 2; });
    const auto root = desk.shown.back();
    EXPECT_EQ(desk.opened.back().filename(), "Reports_Standart.html");
    std::filesystem::remove(desk.opened.back());
    history->showReport();
    Desk::waitUntil([&] { return desk.shown.size() == 2; });
    EXPECT_EQ(desk.opened.size(), 2u) << "the archive's folder instead";

    writeFile(root / "a.dat", "A");
    std::filesystem::remove(root / "b.dat");
    EXPECT_EQ(readAgain(), BatchControl::Failed);
    EXPECT_EQ(history->check()->findings(), "a.dat: changed\nb.dat: missing");

    std::filesystem::remove_all(root);
    EXPECT_EQ(readAgain(), BatchControl::Failed);
    history->showFolder();
    Desk::waitUntil([&] { return !history->note().isEmpty(); });

    desk.mountCard("C003");
    desk.start().settings()->setVerifyOnly(true);
    desk.selectCard("dev-C003", "CamC");
    desk.copy();
    present(3);
    history->setSearch("a001");
    ASSERT_EQ(history->rowCount(), 1);
    EXPECT_TRUE(history->rows()[0].check.contains("could not be done"))
        << "the latest word is kept";
    chooseOnly("camc");
    EXPECT_EQ(history->rows()[0].name, "C003") << "no disk has anything of it";
    EXPECT_FALSE(history->wasCopied());

    SQLite::Database(desk.model().state().database->file().native(), SQLite::OPEN_READWRITE)
        .exec("WITH RECURSIVE more(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM more WHERE i < 300) "
              "INSERT INTO sessions (id, cardName, destName, cameraLabel, sessionRoot, status, "
              "startedAt) SELECT id || i, cardName, destName, cameraLabel, sessionRoot, status, "
              "startedAt FROM sessions, more WHERE cardName = 'C003'");
    EXPECT_EQ(history->rest(), "");
    history->setPresented(false);
    present(300);
    EXPECT_EQ(history->search(), "");
    EXPECT_TRUE(history->rest().startsWith("Only the latest 300")) << "of 303";
}

TEST_F(SessionHistoryTest, SaysOfWhichCopyItSpeaksAndWhatIsInDoubt) {
    copy();
    chooseOnly("a001");
    const auto* const check = history->check();
    {
        const MappedFile mapped(rootOfChosen() / "a.dat", 1);
        EXPECT_EQ(readAgain(), BatchControl::Succeeded);
    }
    EXPECT_TRUE(check->title().startsWith("A001 → SSD1 — Checked")) << check->title().toStdString();
    EXPECT_TRUE(check->findings().startsWith("a.dat: the read-back may have"));
    desk.model().setLanguageCode("tr");
    EXPECT_TRUE(check->title().startsWith("A001 → SSD1 — Denetim"));
    EXPECT_TRUE(check->findings().startsWith("a.dat: geri okuma diskten değil"));
    desk.model().setLanguageCode("en");
    history->setPresented(false);
    EXPECT_TRUE(check->title().isEmpty()) << "it is of no other session";

    desk.start();
    present();
    chooseOnly("a001");
    EXPECT_TRUE(history->rows()[0].isCheckGood && history->rows()[0].isCheckDoubtful);
    EXPECT_TRUE(history->rows()[0].check.contains("from memory"));
    EXPECT_EQ(readAgain(), BatchControl::Succeeded);
    EXPECT_FALSE(history->rows()[0].isCheckDoubtful);
    chooseOnly("b002");
    EXPECT_TRUE(history->check()->title().isEmpty());
}

TEST_F(SessionHistoryTest, AStoreThatIsHeldMakesNoDamagedCopyGood) {
    copy();
    chooseOnly("a001");
    EXPECT_EQ(readAgain(), BatchControl::Succeeded);
    std::filesystem::remove(rootOfChosen() / "b.dat");
    const auto file = desk.model().state().database->file();
    std::optional<SQLite::Database> holder(std::in_place, file.native(), SQLite::OPEN_READWRITE);
    holder->exec("BEGIN EXCLUSIVE");
    history->verifyAgain();
    Desk::waitUntil([&] { return history->isUnread(); });
    EXPECT_EQ(history->check()->standing(), BatchControl::Failed);
    ASSERT_EQ(history->rowCount(), 1) << "what was read before stays";
    EXPECT_FALSE(history->rows()[0].isCheckGood);
    EXPECT_TRUE(history->hasChosen());
    EXPECT_FALSE(history->note().isEmpty());
    holder.reset();
    EXPECT_FALSE(desk.model().state().database->writeWhatIsKept(L10n(AppLanguage::English)));
    Desk::waitUntil([&] { return !history->isUnread(); });
    EXPECT_TRUE(history->note().isEmpty());
    EXPECT_FALSE(history->rows()[0].isCheckGood);
    EXPECT_FALSE(desk.model().state().database->history().back().lastCheck->isGood());

    desk.quit();
    holder.emplace(file.native(), SQLite::OPEN_READWRITE);
    holder->exec("BEGIN EXCLUSIVE");
    desk.start();
    present(0);
    Desk::waitUntil([&] { return history->isUnread(); });
    holder.reset();
    EXPECT_FALSE(desk.model().state().database->writeWhatIsKept(L10n(AppLanguage::English)));
    Desk::waitUntil([&] { return !history->isUnread() && history->rowCount() == 2; });

    desk.quit();
    writeFile(file, std::string(8192, 'x'));
    desk.start();
    present(0);
    Desk::waitUntil([&] { return history->note().startsWith("The history was damaged"); });
}

TEST_F(SessionHistoryTest, ADiskThatDoesNotAnswerKeepsNobodyFromStopping) {
    copy();
    chooseOnly("a001");
    const MountedVolume silent(MountedVolume::FileSystem::ExFat, 16'000'000, desk.folder / "SSD1",
                               "nonempty");
    silent.signalItsProgram(SIGSTOP);
    auto* const check = history->check();
    for (int time = 0; time < 2; ++time) {
        history->verifyAgain();
        EXPECT_TRUE(check->isBusy());
        check->cancel();
        Desk::waitUntil([&] { return !check->isBusy(); });
        EXPECT_EQ(check->standing(), BatchControl::Resting);
        EXPECT_TRUE(check->findings().contains("does not answer"))
            << check->findings().toStdString();
    }
    silent.signalItsProgram(SIGCONT);
    EXPECT_TRUE(history->rows()[0].check.isEmpty());
}
