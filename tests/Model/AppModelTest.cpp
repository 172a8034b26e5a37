#include "Language/L10n.h"
#include "Model/Application.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <functional>
#include <tuple>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

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
    auto& cards = *model().cards();
    auto& units = *model().units();
    units.tapUnit("Drone");
    EXPECT_EQ(chosenIn(*units.units()), "Drone") << "only a highlight";
    EXPECT_EQ(model().state().cardUnits, CardUnits{});

    const auto labels = [&] {
        QStringList shown = {units.title()};
        for (const auto& row : cards.rows())
            shown << row.unit + "/" + row.ekip;
        return shown.join(" ").toStdString();
    };
    // clang-format off
    const std::tuple<const char*, std::function<void()>, const char*> steps[] = {
        {"the crew of the moment, no unit", [&] { cards.toggle(first); }, "Unit for A001 /Ekip1 /"},
        {"", [&] { EXPECT_EQ(chosenIn(*units.units()), "") << "it has none yet"; }, "Unit for A001 /Ekip1 /"},
        {"", [&] { units.tapUnit("CamA"); }, "Unit for A001 CamA/Ekip1 /"},
        {"", [&] { cards.toggle(second); cards.focus(second); }, "Unit for B002 CamA/Ekip1 /Ekip1"},
        {"the card in focus alone", [&] { units.tapCrew(units.crews()->rows()[1].value); }, "Unit for B002 CamA/Ekip1 /Ekip2"},
        {"", [&] { units.setNewUnitName(" Crane/1 "); units.addUnit(); }, "Unit for B002 CamA/Ekip1 Crane-1/Ekip2"},
        {"", [&] { units.deleteUnit(); }, "Unit for B002 CamA/Ekip1 /Ekip2"},
        {"", [&] { units.deleteCrew(); }, "Unit for B002 CamA/Ekip1 /"},
        {"", [&] { units.setNewCrewName("Gece"); units.addCrew(); }, "Unit for B002 CamA/Ekip1 /Gece"},
        {"a fresh tick begins without a unit", [&] { cards.toggle(first); cards.toggle(first); }, "Unit for B002 /Gece /Gece"},
    };
    // clang-format on
    for (const auto& [why, happens, expected] : steps) {
        happens();
        EXPECT_EQ(labels(), expected) << why;
        EXPECT_TRUE(model().batch()->canCopy()) << "a missing unit is told at the button's press";
        EXPECT_THAT(model().state().cardUnits.cardsNeedingUnit, IsEmpty()) << "nobody asks for one";
        EXPECT_EQ(units.newUnitName(), "");
    }
    EXPECT_EQ(units.units()->rowCount(), 7);
}

TEST_F(Application, RemembersWhatItShouldAndNothingElse) {
    desk.mountDisk("SSD1");
    const auto disk2 = desk.mountDisk("SSD2");
    const auto card = desk.mountCard("A001");
    for (const auto* name : {"Raid/film", "OldCard", "Archive"})
        std::filesystem::create_directories(desk.folder / name);
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
    const auto& state = model().state();
    const auto isTicked = [&](const std::string& id) {
        return state.board.selection(VolumeSide::Destination).contains(id);
    };
    // clang-format off
    const std::tuple<const char*, bool, bool> cases[] = {
        {"language", model().languageCode() == "tr", true},
        {"set", state.unitCatalog.selectedSet().name == "Gece", true},
        {"skip name", firstOf(*model().settings()->extraExcludes()) == "MISC", true},
        {"reports folder", state.settings.outputFolderPath == desk.folder / "Archive", true},
        {"ticked disk", isTicked("dev-SSD2"), true},
        {"disk to be a destination", findVolume(state.board.list(VolumeSide::Destination), "dev-RAID") != nullptr, true},
        {"ticked folder", isTicked((desk.folder / "Raid/film").native()), true},
        {"unticked disk", isTicked("dev-SSD1"), false},
        {"unit", model().units()->units()->rowCount() != 7, false},
        {"ticked card", !state.board.selection(VolumeSide::Card).ids.empty(), false},
        {"unit of a card", !state.cardUnits.cameraByCardID.empty(), false},
        {"picked card", listsCard(desk.folder / "OldCard"), false},
        {"hashing alone", model().settings()->verifyOnly(), false},
        {"unsaved option", model().settings()->projectName() == "Kış", false},
    };
    // clang-format on
    for (const auto& [what, hasSurvived, should] : cases)
        EXPECT_EQ(hasSurvived, should) << what;
    EXPECT_EQ(desk.defaults.value("pickedCardBookmarks"), "[]");
    EXPECT_THAT(desk.defaults.value("pickedDestBookmarks").value(), HasSubstr("film"));

    // What is gone when the program starts does not come back.
    std::filesystem::remove_all(desk.folder / "Raid");
    desk.start();
    std::filesystem::create_directories(desk.folder / "Raid/film");
    desk.start();
    EXPECT_TRUE(listsDestination(desk.folder / "Raid/film"))
        << "as long as nothing else was stored";
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
    EXPECT_TRUE(std::filesystem::exists(desk.folder / "Archive")) << "put aside, not taken away";
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
        {"made a disk", [&] {
            desk.volume(card).kind = VolumeKind::Unknown;
            for (const auto side : {VolumeSide::Card, VolumeSide::Destination}) {
                model().volumes().treatAs(side, card.toStdString());
                EXPECT_FALSE(model().batch()->isRefused());
            }
        }},
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
        EXPECT_TRUE(model().cards()->rows()[0].focused) << "where the unit goes";
        happens();
        EXPECT_THAT(model().state().cardUnits.cardsNeedingUnit, IsEmpty());
        EXPECT_FALSE(model().batch()->isRefused()) << model().batch()->title().toStdString();
    }
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

TEST_F(Application, ShowsWhereTheTemplateAndTheReportsFolderLead) {
    desk.start();
    model().pathTemplate()->save("Film/{Cam}");
    EXPECT_EQ(model().pathTemplate()->preview(), "/Volumes/Backup/Film/UNIT");
    model().pathTemplate()->holdExample();
    EXPECT_EQ(model().pathTemplate()->expand("{CardName}"), "/Volumes/Backup/CARD_NAME");
    std::filesystem::create_directories(desk.folder / "Archive");
    desk.choice = desk.folder / "Archive";
    model().reports()->pick();
    EXPECT_EQ(desk.asked, "Choose the reports folder|Use");
    model().reports()->reveal();
    Desk::waitUntil([&] { return !desk.shown.empty(); });
    EXPECT_THAT(desk.shown, ElementsAre(desk.folder / "Archive"));
}
