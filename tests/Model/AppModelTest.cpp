#include "Model/QtText.h"
#include "Storage/AppDatabase.h"
#include "Storage/SupportPaths.h"
#include "support/Desk.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <future>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

QStringList names(const VolumeListModel& list) {
    QStringList result;
    for (const auto& row : list.rows())
        result << row.name + (row.selected ? "+" : "");
    return result;
}

std::string logText() {
    std::string text;
    for (const auto& file : std::filesystem::directory_iterator(SupportPaths::logsDirectory()))
        text += readFile(file.path());
    return text;
}

QVariantMap selectedEntry(const QVariantList& list, const char* flag) {
    for (const auto& entry : list) {
        if (entry.toMap()[flag].toBool())
            return entry.toMap();
    }
    return {};
}

class Application : public ::testing::Test {
protected:
    AppModel& model() { return desk.model(); }

    void pickCard(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().pickCardFolder();
        Desk::waitUntil([&] { return lists(model().board().lists().cards, folder); });
    }

    void pickDestination(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().pickDestinationFolder();
        Desk::waitUntil([&] { return lists(model().board().lists().destinations, folder); });
    }

    static bool lists(const std::vector<ClassifiedVolume>& volumes,
                      const std::filesystem::path& folder) {
        return std::any_of(volumes.begin(), volumes.end(), [&](const auto& volume) {
            return volume.facts.mountPoint == PickedFolders::normalized(folder);
        });
    }

    Desk desk;
};

} // namespace

TEST_F(Application, BeginsPlainlyWithNothingStored) {
    desk.start();
    EXPECT_EQ(model().languageCode(), "en");
    EXPECT_EQ(model().sets().size(), 2);
    EXPECT_EQ(selectedEntry(model().sets(), "selected")["name"], "Ekip1");
    EXPECT_EQ(model().units().size(), 7);
    EXPECT_EQ(model().settings(), OffloadSettings());
    EXPECT_EQ(model().progressTitle(), toQString(model().l10n().idlePrompt()));
    EXPECT_EQ(model().unitTitle(), "Select one or more cards first.");
    EXPECT_FALSE(model().canCopy());
    EXPECT_TRUE(model().isDefaultReportsFolder());
    EXPECT_THAT(logText(), HasSubstr("Uygulama açıldı v0.1.42.0"));
}

TEST_F(Application, GivesEachCardItsUnitAndCrew) {
    const auto first = desk.mountCard("A001");
    const auto second = desk.mountCard("B002");
    desk.mountDisk("SSD1");
    desk.start();
    model().tapUnit("Drone");
    EXPECT_EQ(selectedEntry(model().units(), "active")["name"], "Drone") << "only a highlight";
    EXPECT_EQ(model().cardUnits(), CardUnits{});

    model().toggleCard(first);
    EXPECT_EQ(model().cards()->rows()[0].ekip, "Ekip1") << "the crew of the moment, no unit";
    EXPECT_EQ(model().cards()->rows()[0].unit, "");
    EXPECT_EQ(model().unitTitle(), "Which unit does A001 belong to?");
    EXPECT_TRUE(model().canCopy()) << "a missing unit is told when the button is pressed";
    EXPECT_FALSE(model().allCardsHaveUnits());
    model().tapUnit("CamA");
    EXPECT_EQ(model().cards()->rows()[0].unit, "CamA");

    model().toggleCard(second);
    model().focusCard(second);
    EXPECT_EQ(model().unitTitle(), "Which unit does this card belong to?");
    model().tapSet(model().sets()[1].toMap()["id"].toString());
    model().setNewUnitName(" Crane/1 ");
    model().addUnitFromField();
    EXPECT_EQ(model().newUnitName(), "");
    EXPECT_EQ(model().cards()->rows()[1].unit, "Crane-1");
    EXPECT_EQ(model().cards()->rows()[1].ekip, "Ekip2");
    EXPECT_EQ(model().cards()->rows()[0].ekip, "Ekip1") << "the card in focus alone";
    EXPECT_TRUE(model().allCardsHaveUnits());

    model().deleteSelectedUnit();
    EXPECT_EQ(model().cards()->rows()[1].unit, "");
    EXPECT_EQ(model().units().size(), 7);
    EXPECT_THAT(model().cardUnits().cardsNeedingUnit, IsEmpty()) << "nobody asks for another";
    model().deleteSelectedSet();
    EXPECT_EQ(model().cards()->rows()[1].ekip, "");

    model().setNewSetName("Gece");
    model().addSetFromField();
    EXPECT_EQ(model().cards()->rows()[1].ekip, "Gece");

    model().toggleCard(first);
    model().toggleCard(first);
    EXPECT_EQ(model().cards()->rows()[0].unit, "") << "a fresh tick begins without a unit";
    EXPECT_EQ(model().cards()->rows()[0].ekip, "Gece");
}

TEST_F(Application, RemembersWhatItShouldAndNothingElse) {
    const auto disk1 = desk.mountDisk("SSD1");
    const auto disk2 = desk.mountDisk("SSD2");
    const auto card = desk.mountCard("A001");
    std::filesystem::create_directories(desk.folder / "Raid/film");
    std::filesystem::create_directories(desk.folder / "OldCard");
    std::filesystem::create_directories(desk.folder / "Archive");
    desk.start();
    model().setLanguageCode("tr");
    model().setNewSetName("Gece");
    model().addSetFromField();
    model().setNewUnitName("Crane");
    model().addUnitFromField();
    model().toggleDestination(disk2);
    pickDestination(desk.folder / "Raid/film");
    pickCard(desk.folder / "OldCard");
    desk.choice = desk.folder / "Archive";
    model().pickReportsFolder();
    model().addSkipName("MISC");
    model().setProjectName("Kış");
    desk.selectCard(card, "CamA");
    model().treatAsDestination(card);

    desk.start();
    struct {
        const char* what;
        bool survived;
        bool should;
    } const cases[] = {
        {"language", model().languageCode() == "tr", true},
        {"set", model().unitCatalog().selectedSet().name == "Gece", true},
        {"skip name", model().extraExcludes().contains("MISC"), true},
        {"reports folder", model().settings().outputFolderPath == desk.folder / "Archive", true},
        {"ticked disk", model().board().destinationSelection().contains("dev-SSD2"), true},
        {"ticked folder",
         model().board().destinationSelection().contains((desk.folder / "Raid/film").native()),
         true},
        {"unticked disk", model().board().destinationSelection().contains("dev-SSD1"), false},
        {"unit", model().units().size() != 7, false},
        {"ticked card", !model().board().cardSelection().ids.empty(), false},
        {"unit of a card", !model().cardUnits().cameraByCardID.empty(), false},
        {"picked card", lists(model().board().lists().cards, desk.folder / "OldCard"), false},
        {"unsaved option", model().projectName() == "Kış", false},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(testCase.survived, testCase.should) << testCase.what;
    EXPECT_EQ(desk.defaults.value("pickedCardBookmarks"), "[]");
    EXPECT_THAT(desk.defaults.value("pickedDestBookmarks").value(), HasSubstr("film"));

    // What is gone when the program starts does not come back.
    std::filesystem::remove_all(desk.folder / "Raid");
    desk.start();
    std::filesystem::create_directories(desk.folder / "Raid/film");
    desk.start();
    EXPECT_TRUE(lists(model().board().lists().destinations, desk.folder / "Raid/film"))
        << "as long as nothing else was stored";
    (void)disk1;
}

TEST_F(Application, PickedFoldersLiveSideBySide) {
    desk.mountDisk("SSD1");
    for (const auto* name : {"x/one", "x/two", "x/three"})
        std::filesystem::create_directories(desk.folder / name);
    desk.start();
    pickCard(desk.folder / "x/one");
    EXPECT_EQ(desk.asked, "Choose a camera card or source folder|Select");
    pickCard(desk.folder / "x/two/");
    pickDestination(desk.folder / "x/three");
    EXPECT_EQ(names(*model().cards()), QStringList({"one+", "two+"}));
    EXPECT_EQ(names(*model().destinations()), QStringList({"SSD1+", "three+"}));
    const auto& row = model().cards()->rows()[1];
    EXPECT_TRUE(row.picked && row.focused);
    EXPECT_EQ(row.ekip, "Ekip1");
    EXPECT_EQ(row.volumeID, row.path);
    const auto& facts = model().board().lists().cards[1].facts;
    EXPECT_EQ(facts.deviceIdentifier, "disk-of-all-folders") << "for the records";
    EXPECT_THAT(logText(), HasSubstr("Manuel kart: " + (desk.folder / "x/two").native()));

    desk.choice.reset();
    model().pickCardFolder();
    model().removeCard(row.volumeID);
    EXPECT_EQ(names(*model().cards()), QStringList({"one+"}));
    model().clearAllDestinations();
    EXPECT_EQ(names(*model().destinations()), QStringList({"SSD1+"})) << "the only one is ticked";
    EXPECT_EQ(desk.defaults.value("pickedDestBookmarks"), "[]");
}

TEST_F(Application, MeasuresInTheBackgroundAndAnewWhenRulesChange) {
    const auto card = desk.mountCard("A001", {{"a.mov", "12345"}, {"MISC/x", "123"}});
    desk.mountCard("B002", {{"b.mov", "12"}, {"MISC/x", "1"}});
    desk.mountDisk("SSD1");
    std::promise<void> mayMeasure;
    desk.surroundings.measure = [allowed = mayMeasure.get_future().share()](const auto& entry,
                                                                            const auto& names) {
        allowed.wait();
        return measure(entry, names);
    };
    desk.start();
    model().toggleCard(card);
    EXPECT_EQ(model().sourceTotalText(), "size…");
    mayMeasure.set_value();
    Desk::waitUntil([&] { return model().sourceTotalText() == "8 bytes"; });
    EXPECT_EQ(model().cards()->rows()[0].subtitle, "8 bytes");
    int changes = 0;
    int resets = 0;
    QObject::connect(model().cards(), &QAbstractItemModel::dataChanged, [&] { ++changes; });
    QObject::connect(model().cards(), &QAbstractItemModel::modelReset, [&] { ++resets; });
    model().addSkipName("MISC");
    Desk::waitUntil([&] { return model().sourceTotalText() == "5 bytes"; });
    EXPECT_GT(changes, 0);
    EXPECT_EQ(resets, 0) << "lines that stay keep their delegates";
    // A card that is ticked only now must not show what it held under other rules.
    Desk::waitUntil([&] { return model().cards()->rows()[1].subtitle == "2 bytes"; });
    model().addSkipName("  ");
    EXPECT_EQ(model().extraExcludes(), QStringList({"MISC"}));
}

TEST_F(Application, AnnouncesACardOnce) {
    const auto card = desk.mountCard("A001");
    desk.start();
    const auto mounted = desk.volume(card);
    desk.unmount(card);
    model().applyVolumes();
    EXPECT_TRUE(model().cards()->rows().empty());
    desk.volumes.push_back(mounted);
    model().applyVolumes();
    const auto count = [] {
        return run({"sqlite3", SupportPaths::databaseURL().native(),
                    "SELECT count(*) FROM activity_events WHERE event = 'card_detected' AND detail "
                    "= "
                    "'A001'"})
            .standardOutput;
    };
    Desk::waitUntil([&] { return count() == "1\n"; });
    model().applyVolumes();
    EXPECT_EQ(count(), "1\n");
}

TEST_F(Application, SwitchesLanguageAtOnce) {
    desk.start();
    int told = 0;
    QObject::connect(&model(), &AppModel::languageChanged, [&] { ++told; });
    model().setLanguageCode("xx");
    EXPECT_EQ(told, 0);
    model().setLanguageCode("tr");
    EXPECT_EQ(told, 1);
    EXPECT_EQ(model().l10nTexts()["copy"], "Kopyala");
    EXPECT_THAT(model().progressTitle().toStdString(), StartsWith("Kart, birim ve hedef"));
    EXPECT_EQ(model().templateTokens()[0].toMap()["label"], "Hedef kök");
    EXPECT_EQ(desk.defaults.value("appLanguage"), "tr");
    EXPECT_EQ(model().folderTemplatePreview().right(20), toQString("Ekip1/UNIT/CARD_NAME"));
}

TEST_F(Application, EditsTheTemplateAndTheReportsFolder) {
    desk.start();
    model().saveTemplate("  Film/{Cam}  ");
    EXPECT_EQ(model().folderTemplate(), "Film/{Cam}");
    EXPECT_EQ(model().folderTemplatePreview(), "/Volumes/Backup/Film/UNIT");
    EXPECT_EQ(model().expandTemplate("{CardName}", model().templateExample()),
              "/Volumes/Backup/CARD_NAME");
    model().saveTemplate(" ");
    EXPECT_EQ(OffloadSettings::load(desk.defaults).folderTemplate, FolderTemplate::defaultTemplate);

    std::filesystem::create_directories(desk.folder / "Archive");
    desk.choice = desk.folder / "Archive";
    model().pickReportsFolder();
    EXPECT_EQ(desk.asked, "Choose the reports folder|Use");
    EXPECT_EQ(model().reportsFolderDisplay(), toQString((desk.folder / "Archive").native()));
    EXPECT_FALSE(model().isDefaultReportsFolder());
    model().revealReportsFolder();
    Desk::waitUntil([&] { return !desk.shown.empty(); });
    EXPECT_THAT(desk.shown, ElementsAre(desk.folder / "Archive"));
    model().resetReportsFolder();
    EXPECT_TRUE(model().isDefaultReportsFolder());
    EXPECT_FALSE(desk.defaults.value("reportsFolderBookmark"));
    EXPECT_TRUE(std::filesystem::exists(desk.folder / "Archive"));
}

TEST_F(Application, StartsWithoutVolumesThatDoNotAnswer) {
    std::promise<void> answer;
    const auto answered = answer.get_future().share();
    desk.surroundings.lookAtVolumes = [answered] {
        answered.wait();
    };
    desk.mountDisk("SSD1");
    const auto begin = std::chrono::steady_clock::now();
    desk.start();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_EQ(model().destinations()->count(), 0);
    answer.set_value();
    Desk::waitUntil([&] { return model().destinations()->count() == 1; });
}
