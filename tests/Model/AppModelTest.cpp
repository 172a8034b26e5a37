#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "Storage/AppDatabase.h"
#include "Storage/SupportPaths.h"
#include "support/Desk.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <atomic>
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

QString chosenIn(const ChoiceListModel& list) {
    for (const auto& choice : list.rows()) {
        if (choice.chosen)
            return choice.name;
    }
    return {};
}

QString firstOf(const ChoiceListModel& list) {
    return list.rows().empty() ? QString() : list.rows().front().name;
}

class Application : public ::testing::Test {
protected:
    AppModel& model() { return desk.model(); }

    void pickCard(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().cards()->pickFolder();
        Desk::waitUntil([&] { return lists(model().state().board.lists().cards, folder); });
    }

    void pickDestination(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().destinations()->pickFolder();
        Desk::waitUntil([&] { return lists(model().state().board.lists().destinations, folder); });
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
    EXPECT_EQ(model().units()->crews()->rowCount(), 2);
    EXPECT_EQ(chosenIn(*model().units()->crews()), "Ekip1");
    EXPECT_EQ(model().units()->units()->rowCount(), 7);
    EXPECT_EQ(model().state().settings, OffloadSettings());
    EXPECT_EQ(model().batch()->title(), toQString(model().state().l10n().idlePrompt()));
    EXPECT_EQ(model().units()->title(), "Select one or more cards first.");
    EXPECT_FALSE(model().batch()->canCopy());
    EXPECT_TRUE(model().reports()->isDefault());
    model().batch()->phaseChanged(Phase::Verifying{"a", 9, 10, 0.999});
    EXPECT_EQ(model().batch()->percentText(), "99%") << "the last file is not the end";
    EXPECT_THAT(logOfUserIn(desk.folder / "user"),
                HasSubstr("Uygulama açıldı v" + std::string(AppInfo::version)));
}

TEST_F(Application, GivesEachCardItsUnitAndCrew) {
    const auto first = desk.mountCard("A001");
    const auto second = desk.mountCard("B002");
    desk.mountDisk("SSD1");
    desk.start();
    model().units()->tapUnit("Drone");
    EXPECT_EQ(chosenIn(*model().units()->units()), "Drone") << "only a highlight";
    EXPECT_EQ(model().state().cardUnits, CardUnits{});

    model().cards()->toggle(first);
    EXPECT_EQ(model().cards()->rows()[0].ekip, "Ekip1") << "the crew of the moment, no unit";
    EXPECT_EQ(model().cards()->rows()[0].unit, "");
    EXPECT_EQ(model().units()->title(), "Unit for A001");
    EXPECT_EQ(chosenIn(*model().units()->units()), "") << "it has none yet";
    EXPECT_TRUE(model().batch()->canCopy()) << "a missing unit is told when the button is pressed";
    model().units()->tapUnit("CamA");
    EXPECT_EQ(model().cards()->rows()[0].unit, "CamA");

    model().cards()->toggle(second);
    model().cards()->focus(second);
    EXPECT_EQ(model().units()->title(), "Unit for B002");
    model().units()->tapCrew(model().units()->crews()->rows()[1].value);
    model().units()->setNewUnitName(" Crane/1 ");
    model().units()->addUnit();
    EXPECT_EQ(model().units()->newUnitName(), "");
    EXPECT_EQ(model().cards()->rows()[1].unit, "Crane-1");
    EXPECT_EQ(model().cards()->rows()[1].ekip, "Ekip2");
    EXPECT_EQ(model().cards()->rows()[0].ekip, "Ekip1") << "the card in focus alone";

    model().units()->deleteUnit();
    EXPECT_EQ(model().cards()->rows()[1].unit, "");
    EXPECT_EQ(model().units()->units()->rowCount(), 7);
    EXPECT_THAT(model().state().cardUnits.cardsNeedingUnit, IsEmpty()) << "nobody asks for another";
    model().units()->deleteCrew();
    EXPECT_EQ(model().cards()->rows()[1].ekip, "");

    model().units()->setNewCrewName("Gece");
    model().units()->addCrew();
    EXPECT_EQ(model().cards()->rows()[1].ekip, "Gece");

    model().cards()->toggle(first);
    model().cards()->toggle(first);
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
    const auto inside = desk.mountDisk("RAID");
    desk.volume(inside).kind = VolumeKind::System;
    desk.volume(inside).facts.volumeUUID = "R";
    desk.start();
    model().setLanguageCode("tr");
    model().units()->setNewCrewName("Gece");
    model().units()->addCrew();
    model().units()->setNewUnitName("Crane");
    model().units()->addUnit();
    model().destinations()->toggle(disk2);
    pickDestination(desk.folder / "Raid/film");
    pickCard(desk.folder / "OldCard");
    desk.choice = desk.folder / "Archive";
    model().reports()->pick();
    model().settings()->setVerifyOnly(true);
    model().settings()->addSkipName("MISC");
    model().settings()->setProjectName("Kış");
    desk.selectCard(card, "CamA");
    desk.unmount(disk2);
    model().volumes().treatAs(VolumeSide::Destination, card.toStdString());
    model().volumes().treatAs(VolumeSide::Destination, inside.toStdString());
    desk.mountDisk("SSD2");

    desk.start();
    struct {
        const char* what;
        bool survived;
        bool should;
    } const cases[] = {
        {"language", model().languageCode() == "tr", true},
        {"set", model().state().unitCatalog.selectedSet().name == "Gece", true},
        {"skip name", firstOf(*model().settings()->extraExcludes()) == "MISC", true},
        {"reports folder", model().state().settings.outputFolderPath == desk.folder / "Archive",
         true},
        {"ticked disk",
         model().state().board.selection(VolumeSide::Destination).contains("dev-SSD2"), true},
        {"disk to be a destination",
         findVolume(model().state().board.list(VolumeSide::Destination), "dev-RAID") != nullptr,
         true},
        {"ticked folder",
         model()
             .state()
             .board.selection(VolumeSide::Destination)
             .contains((desk.folder / "Raid/film").native()),
         true},
        {"unticked disk",
         model().state().board.selection(VolumeSide::Destination).contains("dev-SSD1"), false},
        {"unit", model().units()->units()->rowCount() != 7, false},
        {"ticked card", !model().state().board.selection(VolumeSide::Card).ids.empty(), false},
        {"unit of a card", !model().state().cardUnits.cameraByCardID.empty(), false},
        {"picked card", lists(model().state().board.lists().cards, desk.folder / "OldCard"), false},
        {"hashing alone", model().settings()->verifyOnly(), false},
        {"unsaved option", model().settings()->projectName() == "Kış", false},
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
    EXPECT_TRUE(lists(model().state().board.lists().destinations, desk.folder / "Raid/film"))
        << "as long as nothing else was stored";
    (void)disk1;
}

TEST_F(Application, StoresEachChangeAtOnce) {
    const auto disk1 = desk.mountDisk("SSD1");
    const auto disk2 = desk.mountDisk("SSD2");
    desk.start();
    std::filesystem::create_directories(desk.folder / "Archive");
    const auto junk = *TreeWalker::defaultSkipNames().begin();
    // Ticked disks, crew, template, which of two names are skipped, and the reports folder.
    const auto stored = [&] {
        const auto settings = OffloadSettings::load(desk.defaults);
        const bool isUsual = settings.folderTemplate == FolderTemplate::defaultTemplate;
        return desk.defaults.value("lastDestIDs").value_or("none") + "|" +
               UnitCatalog::load(desk.defaults).selectedSet().name + "|" +
               (isUsual ? "usual" : settings.folderTemplate) + "|" +
               (settings.skipNames().contains("MISC") ? "MISC" : "") +
               (settings.skipNames().contains(junk) ? "+junk" : "") + "|" +
               std::filesystem::path(settings.outputFolderPath).filename().native();
    };
    // clang-format off
    const std::pair<std::function<void()>, const char*> steps[] = {
        {[&] { model().settings()->addSkipName("MISC"); }, "none|Ekip1|usual|MISC+junk|"},
        {[&] { model().destinations()->toggle(disk1); }, R"(["dev-SSD1"]|Ekip1|usual|MISC+junk|)"},
        {[&] { model().destinations()->toggle(disk2); }, R"(["dev-SSD1","dev-SSD2"]|Ekip1|usual|MISC+junk|)"},
        {[&] { desk.start(); }, R"(["dev-SSD1","dev-SSD2"]|Ekip1|usual|MISC+junk|)"},
        {[&] { model().destinations()->remove(disk1); }, R"(["dev-SSD2"]|Ekip1|usual|MISC+junk|)"},
        {[&] { model().destinations()->clear(); }, "[]|Ekip1|usual|MISC+junk|"},
        {[&] { model().units()->tapCrew(model().units()->crews()->rows()[1].value); }, "[]|Ekip2|usual|MISC+junk|"},
        {[&] { model().units()->deleteCrew(); }, "[]|Ekip1|usual|MISC+junk|"},
        {[&] { model().pathTemplate()->save("  Film/{Cam} "); }, "[]|Ekip1|Film/{Cam}|MISC+junk|"},
        {[&] { model().pathTemplate()->save(" "); }, "[]|Ekip1|usual|MISC+junk|"},
        {[&] { model().settings()->setDefaultSkip(toQString(junk), false); }, "[]|Ekip1|usual|MISC|"},
        {[&] { model().settings()->removeSkipName("MISC"); }, "[]|Ekip1|usual||"},
        {[&] { desk.choice = desk.folder / "Archive"; model().reports()->pick(); }, "[]|Ekip1|usual||Archive"},
        {[&] { model().reports()->reset(); }, "[]|Ekip1|usual||"},
    };
    // clang-format on
    for (const auto& [change, expected] : steps) {
        change();
        EXPECT_EQ(stored(), expected);
    }
}

TEST_F(Application, AsksForAUnitAsLongAsThereIsACardToGiveItTo) {
    const auto card = desk.mountCard("A001");
    desk.mountDisk("SSD1");
    const auto mounted = desk.volumes;
    // clang-format off
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"unticked", [&] { model().cards()->toggle(card); }},
        {"all put aside", [&] { model().cards()->clear(); }},
        {"removed", [&] { model().cards()->remove(card); }},
        {"pulled", [&] { desk.unmount(card); model().volumes().apply(); }},
        {"exchanged", [&] { desk.volume(card).facts.volumeUUID = "another"; model().volumes().apply(); }},
    };
    // clang-format on
    for (const auto& [what, happens] : ways) {
        SCOPED_TRACE(what);
        desk.volumes = mounted;
        desk.volume(card).facts.volumeUUID = "first";
        desk.start();
        model().cards()->toggle(card);
        model().batch()->start();
        EXPECT_EQ(model().state().cardUnits.cardsNeedingUnit, VolumeIDs{"dev-A001"});
        EXPECT_EQ(model().batch()->title(), "A001 has no unit yet");
        happens();
        EXPECT_THAT(model().state().cardUnits.cardsNeedingUnit, IsEmpty());
        EXPECT_FALSE(model().batch()->isRefused()) << model().batch()->title().toStdString();
    }
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
    const auto& facts = model().state().board.lists().cards[1].facts;
    EXPECT_EQ(facts.deviceIdentifier, "disk-of-all-folders") << "for the records";
    EXPECT_THAT(logOfUserIn(desk.folder / "user"),
                HasSubstr("Manuel kart: " + (desk.folder / "x/two").native()));

    desk.choice.reset();
    model().cards()->pickFolder();
    model().cards()->remove(row.volumeID);
    EXPECT_EQ(names(*model().cards()), QStringList({"one+"}));
    model().destinations()->clear();
    EXPECT_EQ(names(*model().destinations()), QStringList({"SSD1+"})) << "the only one is ticked";
    EXPECT_EQ(desk.defaults.value("pickedDestBookmarks"), "[]");
}

TEST_F(Application, TellsCardsApartAndSaysWhyOneIsNoDestination) {
    const std::string twins[] = {"A\xff", "A\xfe"};
    for (const auto& name : twins)
        desk.mountCard(name);
    const auto card = desk.mountCard("B002");
    desk.start();
    const auto rows = model().cards()->rows();
    model().cards()->toggle(rows[1].volumeID);
    model().units()->tapUnit("CamA");
    model().cards()->toggle(card);
    model().units()->tapUnit("CamB");
    const auto& units = model().state().cardUnits;
    EXPECT_EQ(units.cameraByCardID, (CardLabels{{"dev-" + twins[1], "CamA"}, {"dev-B002", "CamB"}}))
        << "no row has the focus: the card ticked last is meant";

    desk.choice = desk.folder / "B002";
    model().destinations()->pickFolder();
    Desk::waitUntil([&] { return model().batch()->isRefused(); });
    EXPECT_EQ(model().batch()->title(), "B002 is listed as a card, so it cannot be a destination");
    EXPECT_EQ(desk.defaults.value("pickedDestBookmarks"), "[]") << "nor at the next start";
    std::filesystem::create_directories(desk.folder / "x");
    pickDestination(desk.folder / "x");
    EXPECT_FALSE(model().batch()->isRefused()) << "another one will do";
    model().cards()->remove(card);
    EXPECT_EQ(names(*model().destinations()), QStringList({"x+"})) << "a card all the same";
    EXPECT_EQ(model().otherVolumes()->rows().at(0).name, "B002") << "where it can be reached";
    EXPECT_FALSE(model().otherVolumes()->rows().at(0).canBeDestination);
    desk.choice = desk.folder / "B002";
    model().destinations()->pickFolder();
    Desk::waitUntil([&] { return model().batch()->isRefused(); });
}

// A disk may be mounted on a picked folder, and taken away from it, while the window is open.
TEST_F(Application, APickedMountPointFollowsItsDisk) {
    // Workers may look after the test's end.
    const auto isBare = std::make_shared<std::atomic<bool>>(true);
    desk.surroundings.isBare = [isBare](const auto&) {
        return isBare->load();
    };
    desk.surroundings.volumeFacts = [](const auto& folder) {
        VolumeFacts facts;
        facts.identity = FolderIdentity::at(folder);
        return facts;
    };
    const auto place = desk.folder / "raid";
    std::filesystem::create_directory(place);
    desk.start();
    pickDestination(place);
    const auto row = [&] {
        return model().destinations()->rows().at(0);
    };
    EXPECT_TRUE(row().warns && row().selected);
    EXPECT_EQ(row().subtitle, "No disk is mounted here");
    desk.start();
    EXPECT_TRUE(row().warns && !row().selected) << "nobody ticked it this time";

    for (const bool isMounted : {true, false}) {
        SCOPED_TRACE(isMounted);
        model().destinations()->toggle(row().volumeID);
        std::filesystem::rename(place, desk.folder / (isMounted ? "root's" : "disk's"));
        std::filesystem::create_directory(place);
        *isBare = !isMounted;
        model().volumes().apply();
        // The tick was another folder's.
        Desk::waitUntil([&] { return row().warns != isMounted && !row().selected; });
        EXPECT_EQ(row().subtitle == "No disk is mounted here", !isMounted);
    }
}

TEST_F(Application, MeasuresInTheBackgroundAndAnewWhenRulesChange) {
    const auto card = desk.mountCard("A001", {{"a.mov", "12345"}, {"MISC/x", "123"}});
    desk.mountCard("B002", {{"b.mov", "12"}, {"MISC/x", "1"}});
    desk.mountDisk("SSD1");
    std::promise<void> mayMeasure;
    desk.surroundings.measure = [allowed = mayMeasure.get_future().share()](const auto& entry,
                                                                            const auto& names) {
        if (entry.id == "dev-A001")
            allowed.wait();
        return measure(entry, names);
    };
    desk.start();
    model().cards()->toggle(card);
    Desk::waitUntil([&] { return model().cards()->rows()[1].subtitle == "3 bytes"; });
    EXPECT_EQ(model().cards()->totalText(), "size…") << "one that is silent keeps back no other";
    mayMeasure.set_value();
    Desk::waitUntil([&] { return model().cards()->totalText() == "8 bytes"; });
    EXPECT_EQ(model().cards()->rows()[0].subtitle, "8 bytes");
    int changes = 0;
    int resets = 0;
    QObject::connect(model().cards(), &QAbstractItemModel::dataChanged, [&] { ++changes; });
    QObject::connect(model().cards(), &QAbstractItemModel::modelReset, [&] { ++resets; });
    model().settings()->addSkipName("MISC");
    Desk::waitUntil([&] { return model().cards()->totalText() == "5 bytes"; });
    EXPECT_GT(changes, 0);
    EXPECT_EQ(resets, 0) << "lines that stay keep their delegates";
    // A card that is ticked only now must not show what it held under other rules.
    Desk::waitUntil([&] { return model().cards()->rows()[1].subtitle == "2 bytes"; });
    model().settings()->addSkipName("  ");
    EXPECT_EQ(model().settings()->extraExcludes()->rowCount(), 1);
}

TEST_F(Application, AnnouncesACardOnce) {
    const auto card = desk.mountCard("A001");
    desk.start();
    const auto mounted = desk.volume(card);
    desk.unmount(card);
    model().volumes().apply();
    EXPECT_TRUE(model().cards()->rows().empty());
    desk.volumes.push_back(mounted);
    model().volumes().apply();
    const auto count = [] {
        return run({"sqlite3", SupportPaths::databaseURL().native(),
                    "SELECT count(*) FROM activity_events WHERE event = 'card_detected' AND detail "
                    "= "
                    "'A001'"})
            .standardOutput;
    };
    Desk::waitUntil([&] { return count() == "1\n"; });
    model().volumes().apply();
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
    EXPECT_THAT(model().batch()->title().toStdString(), StartsWith("Kart, birim ve hedef"));
    EXPECT_EQ(firstOf(*model().pathTemplate()->tokens()), "Hedef kök");
    EXPECT_EQ(desk.defaults.value("appLanguage"), "tr");
    EXPECT_EQ(model().pathTemplate()->preview().right(20), toQString("Ekip1/BİRİM/KART_ADI"));
}

TEST_F(Application, EditsTheTemplateAndTheReportsFolder) {
    desk.start();
    model().pathTemplate()->save("  Film/{Cam}  ");
    EXPECT_EQ(model().pathTemplate()->text(), "Film/{Cam}");
    EXPECT_EQ(model().pathTemplate()->preview(), "/Volumes/Backup/Film/UNIT");
    model().pathTemplate()->holdExample();
    EXPECT_EQ(model().pathTemplate()->expand("{CardName}"), "/Volumes/Backup/CARD_NAME");
    std::filesystem::create_directories(desk.folder / "Archive");
    desk.choice = desk.folder / "Archive";
    model().reports()->pick();
    EXPECT_EQ(desk.asked, "Choose the reports folder|Use");
    EXPECT_EQ(model().reports()->path(), toQString((desk.folder / "Archive").native()));
    EXPECT_FALSE(model().reports()->isDefault());
    model().reports()->reveal();
    Desk::waitUntil([&] { return !desk.shown.empty(); });
    EXPECT_THAT(desk.shown, ElementsAre(desk.folder / "Archive"));
    model().reports()->reset();
    EXPECT_TRUE(model().reports()->isDefault());
    EXPECT_TRUE(std::filesystem::exists(desk.folder / "Archive"));
}

TEST_F(Application, StartsWithoutVolumesThatDoNotAnswer) {
    for (const bool isFolder : {false, true}) {
        Desk own;
        std::promise<void> answer;
        const auto answered = answer.get_future().share();
        own.mountDisk("SSD1");
        own.start();
        for (const auto* name : {"share", "film"}) {
            own.choice = own.folder / name;
            std::filesystem::create_directories(*own.choice);
            const int before = own.model().destinations()->count();
            own.model().destinations()->pickFolder();
            Desk::waitUntil([&] { return own.model().destinations()->count() > before; });
        }
        if (isFolder) {
            own.surroundings.volumeFacts = [answered](const auto& folder) {
                if (folder.filename() == "share")
                    answered.wait();
                return VolumeFacts();
            };
        } else {
            own.surroundings.lookAtVolumes = [answered] {
                answered.wait();
            };
        }
        const auto begin = std::chrono::steady_clock::now();
        own.start();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
        EXPECT_EQ(own.model().destinations()->count(), isFolder ? 2 : 0)
            << "a folder that is silent keeps back no volume";
        const auto remembered = own.defaults.value("pickedDestBookmarks").value();
        EXPECT_THAT(remembered, AllOf(HasSubstr("share"), HasSubstr("film")));
        answer.set_value();
        Desk::waitUntil([&] { return own.model().destinations()->count() == 3; });
    }
}
