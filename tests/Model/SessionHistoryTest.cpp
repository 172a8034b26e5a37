#include "Model/History/SessionHistory.h"

#include "support/Desk.h"
#include "support/Files.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::SizeIs;

TEST(SessionHistory, FindsSessionsAndReadsTheirCopiesAgain) {
    Desk desk;
    const auto disk = desk.mountDisk("SSD1");
    const auto cards = {desk.mountCard("A001", {{"a.mov", "a"}, {"b.mov", "b"}}),
                        desk.mountCard("B002")};
    desk.start();
    const auto& chosen = desk.model().state().board.selection(VolumeSide::Destination);
    if (!chosen.contains(disk.toStdString()))
        desk.model().destinations()->toggle(disk);
    for (const auto& card : cards)
        desk.selectCard(card, "CamA");
    desk.copy();

    auto* history = desk.model().history();
    const auto present = [&] {
        history->setPresented(true);
        Desk::waitUntil([&] { return history->rowCount() == 2; });
    };
    present();
    history->setSearch("nothing");
    EXPECT_EQ(history->rowCount(), 0);
    history->setSearch("cama a001");
    ASSERT_EQ(history->rowCount(), 1);
    EXPECT_EQ(history->rows()[0].name, "A001 → SSD1");
    EXPECT_TRUE(history->rows()[0].isVerified);
    EXPECT_TRUE(history->rows()[0].check.isEmpty());

    const auto readAgain = [&] {
        bool isStored = false;
        const auto stored =
            QObject::connect(history, &SessionHistory::read, [&] { isStored = true; });
        history->verifyAgain();
        Desk::waitUntil([&] { return isStored; });
        QObject::disconnect(stored);
        return history->check()->standing();
    };
    history->verifyAgain();
    EXPECT_FALSE(history->check()->isBusy()) << "nothing is chosen";
    history->choose(history->rows()[0].sessionID);
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

    writeFile(root / "a.mov", "A");
    std::filesystem::remove(root / "b.mov");
    EXPECT_EQ(readAgain(), BatchControl::Failed);
    EXPECT_EQ(history->check()->findings(), "a.mov: changed\nb.mov: missing");

    std::filesystem::remove_all(root);
    EXPECT_EQ(readAgain(), BatchControl::Failed);
    history->showFolder();
    Desk::waitUntil([&] { return !history->note().isEmpty(); });

    desk.start();
    history = desk.model().history();
    present();
    history->setSearch("a001");
    ASSERT_EQ(history->rowCount(), 1);
    EXPECT_TRUE(history->rows()[0].check.contains("could not be done"))
        << "the latest word is kept";
}
