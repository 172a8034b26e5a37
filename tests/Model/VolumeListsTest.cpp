#include "Model/Application.h"
#include "Storage/SupportPaths.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <QTimer>

#include <atomic>
#include <future>

// What the lists of cards and destinations show of volumes and picked folders.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

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
    EXPECT_TRUE(row.focused);
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
    // It is looked at again and again, here faster than a user would wait.
    auto* again = model().volumes().findChild<QTimer*>();
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(again->isActive());
    EXPECT_EQ(again->intervalAsDuration(), std::chrono::seconds(5));
    again->start(std::chrono::milliseconds(20));

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
        own.surroundings.patienceAtStart = std::chrono::milliseconds(300);
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
    // Nor what it held before it was used again.
    model().cards()->toggle(card);
    writeFile(model().cards()->rows()[0].path.toStdString() + "/late.mov", "1");
    model().cards()->toggle(card);
    Desk::waitUntil([&] { return model().cards()->totalText() == "6 bytes"; });
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
