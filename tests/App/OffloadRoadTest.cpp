#include "App/Person.h"
#include "App/StagedDesktop.h"

#include "Storage/SupportPaths.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QPushButton>
#include <QQuickWindow>
#include <QScreen>
#include <QToolButton>

#include <map>
#include <ostream>

// The whole road of an offload as a person walks it: real volumes, real events, the real program.

namespace {

using namespace slatewise;
using namespace slatewise::test;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::int64_t kMiB = 1 << 20;

std::string shown(const QString& text) {
    return text.toStdString();
}

/// Every regular file below, with its digest as another program has it.
std::map<std::string, std::string> digestsBelow(const std::filesystem::path& folder) {
    std::map<std::string, std::string> digests;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
        if (file.is_regular_file())
            digests[file.path().filename().native()] = independentSha256(file.path());
    }
    return digests;
}

struct Words {
    const char* language;
    const char* success;
    const char* outcome;
    const char* copy;

    friend void PrintTo(const Words& words, std::ostream* out) { *out << words.language; }
};

class OffloadRoad : public ::testing::TestWithParam<Words> {};

TEST_P(OffloadRoad, FromThePluggedInCardToTheOpenedReport) {
    const auto& words = GetParam();
    Person person;
    if (std::string(words.language) == "tr") {
        person.click(person.see("advanced"));
        Person::wait("settings", [&] { return person.see("chip:Türkçe") != nullptr; });
        Person::settle();
        person.click(person.see("chip:Türkçe"));
        person.click(person.see("done"));
        Person::wait("closed settings", [&] { return person.see("languages") == nullptr; });
    }
    EXPECT_EQ(person.see("copy")->window()->height(),
              QGuiApplication::primaryScreen()->availableGeometry().height());
    EXPECT_EQ(shown(Person::text(person.see("copy"))), words.copy);
    EXPECT_FALSE(person.see("copy")->isEnabled());

    auto& card = person.plugInCard("A001");
    auto& disk = person.plugIn("SHUTTLE", 64 * kMiB);
    const auto original = digestsBelow(card / "DCIM");
    person.click(person.see("mark", person.row("cards", "A001")));
    person.click(person.chip("Ekip2"));
    person.click(person.chip("CamB"));
    auto* badge = person.see("ekipBadge", person.row("cards", "A001"));
    EXPECT_EQ(shown(Person::text(badge)), "Ekip2");
    // By keyboard from here on: Tab leads to the disk's row, and Space ticks it. As the only disk
    // it came ticked.
    auto* shuttle = person.row("disks", "SHUTTLE");
    EXPECT_TRUE(person.see("copy")->isEnabled());
    shuttle->forceActiveFocus(Qt::TabFocusReason);
    person.press(Qt::Key_Space);
    EXPECT_FALSE(person.see("copy")->isEnabled());
    person.press(Qt::Key_Space);
    Person::wait("copy allowed", [&] { return person.see("copy")->isEnabled(); });
    person.see("copy")->forceActiveFocus(Qt::TabFocusReason);
    person.press(Qt::Key_Return);

    EXPECT_THAT(shown(person.outcome()), StartsWith(words.outcome));
    ASSERT_TRUE(person.see("successText"));
    EXPECT_EQ(shown(Person::text(person.see("successText"))), words.success);
    EXPECT_EQ(shown(Person::text(person.see("percent"))), "100%");
    Person::wait("report", [&] { return !person.openedReports().empty(); });
    ASSERT_EQ(person.openedReports().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(person.openedReports().front()));

    const auto day = std::filesystem::directory_iterator(disk.path());
    std::filesystem::path session;
    for (const auto& entry : day) {
        if (entry.path().filename().native().starts_with("20"))
            session = entry.path() / "Ekip2" / "CamB" / "A001";
    }
    EXPECT_EQ(digestsBelow(session), original);
    EXPECT_TRUE(std::filesystem::exists(disk / "reports"));
}

INSTANTIATE_TEST_SUITE_P(Languages, OffloadRoad,
                         ::testing::Values(Words{"en", "SUCCESS!", "Verified — 2 files", "Copy"},
                                           Words{"tr", "BAŞARILI!", "Doğrulandı — 2 dosya",
                                                 "Kopyala"}),
                         [](const auto& which) { return std::string(which.param.language); });

TEST(OffloadTrouble, ACardWithoutAUnitAsksForOneAndThenGoes) {
    Person person;
    person.plugInCard("A001");
    person.plugIn("SHUTTLE", 64 * kMiB);
    person.click(person.see("mark", person.row("cards", "A001")));
    person.chooseDisk("SHUTTLE");
    person.click(person.see("copy"));
    Person::wait("prompt", [&] { return person.see("unitPrompt") != nullptr; });
    EXPECT_FALSE(person.see("stop"));
    EXPECT_TRUE(person.openedReports().empty());

    person.click(person.chip("CamA"));
    EXPECT_FALSE(person.see("unitPrompt"));
    person.click(person.see("copy"));
    EXPECT_THAT(shown(person.outcome()), StartsWith("Verified"));
}

TEST(OffloadTrouble, ADiskWithoutRoomIsRefused) {
    Person person;
    person.plugInCard("A001", 2, 12 * kMiB);
    auto& disk = person.plugIn("SMALL", 16 * kMiB);
    person.choose("A001", "CamA");
    person.chooseDisk("SMALL");
    person.click(person.see("copy"));
    EXPECT_THAT(
        shown(person.outcome()),
        AllOf(HasSubstr("Not enough space"), HasSubstr("Make room on it or choose another disk.")));
    EXPECT_TRUE(person.see("failureMark"));
    for (const auto& entry : std::filesystem::directory_iterator(disk.path()))
        EXPECT_FALSE(entry.path().filename().native().starts_with("20")) << entry.path();
}

TEST(OffloadTrouble, ACardThatIsPulledFailsAndLeavesTheList) {
    Person person;
    auto& card = person.makeReady(6, 24 * kMiB);
    person.click(person.see("copy"));
    Person::wait("progress",
                 [&] { return person.application().model().batch()->fraction() > 0.02; });
    card.pull();
    EXPECT_THAT(shown(person.outcome()), StartsWith("Failed"));
    EXPECT_TRUE(person.see("failureMark"));
    EXPECT_FALSE(person.see("successMark"));
    Person::wait("card gone", [&] { return !person.sees("cards", "A001"); });
}

TEST(OffloadTrouble, StopEndsTheCopyAndTheNextOneGoesThrough) {
    Person person;
    person.makeReady(6, 64 * kMiB);
    person.click(person.see("copy"));
    Person::wait("stop", [&] { return person.see("stop") != nullptr; });
    EXPECT_FALSE(person.see("copy"));
    Person::settle();
    person.click(person.see("stop"));
    // Between two files, or inside one, whose session is then reported.
    EXPECT_THAT(shown(person.outcome()), AnyOf(HasSubstr("Cancelled."), HasSubstr("You stopped it"),
                                               HasSubstr("Verification did not finish")));
    EXPECT_FALSE(person.see("successMark"));

    Person::settle();
    person.click(person.see("copy"));
    Person::wait("second copy", [&] { return person.see("stop") != nullptr; });
    EXPECT_THAT(shown(person.outcome()), StartsWith("Verified"));
}

TEST(OffloadTrouble, ClosingTheWindowCutsACopyOffAndTheLogSaysSo) {
    Person person;
    person.makeReady(6, 24 * kMiB);
    person.click(person.see("copy"));
    Person::wait("stop", [&] { return person.see("stop") != nullptr; });
    person.application().window().close();
    person.application().noteEnd();
    EXPECT_THAT(person.logText(), HasSubstr("kopya yarıda kaldı"));
}

TEST(Shell, EndsWithASentenceWhereThereIsNoScreen) {
    const auto ended = run({"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM=xcb",
                            (programsFolder() / "slatewise-dit").native()});
    EXPECT_EQ(ended.exitCode, 1);
    // The toolkit may have had something to say before.
    EXPECT_THAT(ended.standardError, HasSubstr("slatewise-dit: Slatewise DIT cannot start: "));
}

TEST(Shell, AsksForFoldersWithTheDesktopsDialogWhereThereIsOne) {
    StagedDesktop desktop;
    Person person;
    TemporaryFolder folder;
    const auto roll = folder / "Roll \xff";
    writeFile(roll / "clip.mov", "x");
    desktop.offerFolderDialog("file://" + QString::fromStdString(folder.path()) + "/Roll%20%FF");
    person.click(person.see("chooseFolder", person.see("cards")));
    const auto& cards = person.application().model().state().board.lists().cards;
    Person::wait("the card", [&] { return !cards.empty(); });
    EXPECT_EQ(cards.front().facts.mountPoint, roll);
    ASSERT_EQ(desktop.questions.size(), 1U);
    auto& question = desktop.questions.front();
    EXPECT_EQ(shown(question["title"].toString()), "Choose a camera card or source folder");
    EXPECT_EQ(shown(question["accept_label"].toString()), "Select");
    EXPECT_TRUE(question["directory"].toBool());

    desktop.offerFolderDialog({});
    person.click(person.see("chooseFolder", person.see("disks")));
    Person::wait("the question", [&] { return desktop.questions.size() == 2; });
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty()) << "cancelled is no reason to ask again";
}

TEST(Shell, AsksForFoldersWithADialogOfItsOwnOtherwise) {
    Person person;
    TemporaryFolder home;
    std::filesystem::create_directories(home / "Rolls/one");
    qputenv("HOME", home.path().c_str());
    const auto dialog = [&]() -> QFileDialog* {
        for (auto* widget : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<QFileDialog*>(widget);
            if (found && found->isVisible())
                return found;
        }
        return nullptr;
    };
    for (int time = 0; time < 2; ++time) {
        person.click(person.see("chooseFolder", person.see("cards")));
        Person::wait("dialog", [&] { return dialog() != nullptr; });
        EXPECT_EQ(shown(dialog()->directory().path()), home.path()) << "home each time";
        EXPECT_TRUE(dialog()->findChild<QToolButton*>("newFolderButton")->isEnabled());
        dialog()->setDirectory(dialog()->directory().filePath("Rolls"));
        // Nothing in it is chosen: the folder itself is meant.
        auto* buttons = dialog()->findChild<QDialogButtonBox*>("buttonBox");
        auto* choose = buttons->buttons().constFirst();
        for (auto* button : buttons->buttons()) {
            if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                choose = button;
        }
        EXPECT_EQ(shown(choose->text()), "Select");
        ASSERT_TRUE(choose->isEnabled());
        choose->click();
        EXPECT_NE(person.row("cards", "Rolls"), nullptr);
    }
}

TEST(Shell, TellsTheDesktopHowItGoesAndHowItEnded) {
    StagedDesktop desktop;
    Person person;
    person.makeReady(3, 16 * kMiB);
    for (const bool isWatching : {true, false}) {
        if (!isWatching) {
            person.choose("A001", "CamA");
            person.application().window().hide();
            person.application().model().batch()->start();
        } else {
            person.application().window().requestActivate();
            Person::wait("active", [&] { return person.application().window().isActive(); });
            person.click(person.see("copy"));
        }
        Person::wait("end", [&] { return !person.application().model().batch()->isBusy(); });
        Person::wait("no bar", [&] { return !desktop.isProgressShown; });
        EXPECT_GT(desktop.progress.size(), 1U);
        if (isWatching) {
            EXPECT_TRUE(desktop.notifications.isEmpty());
        }
    }
    Person::wait("notification", [&] { return !desktop.notifications.isEmpty(); });
    EXPECT_THAT(shown(desktop.notifications.first()), StartsWith("Verified — 3 files"));
    EXPECT_THAT(shown(desktop.notifications.first()), HasSubstr("A001 → SHUTTLE: verified"));
}

} // namespace
