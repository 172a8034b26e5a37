#include "Model/Volumes/VolumeBoard.h"
#include "Language/L10n.h"

#include "Model/Volumes/VolumeTexts.h"
#include "Volumes/PickedFolder.h"

#include <gmock/gmock.h>

using namespace slatewise;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

ClassifiedVolume volume(const std::string& id, VolumeKind kind) {
    ClassifiedVolume result;
    result.facts.deviceIdentifier = id;
    result.facts.volumeName = id;
    result.facts.mountPoint = "/media/" + id;
    result.kind = kind;
    return result;
}

ClassifiedVolume folder(const std::string& path, VolumeKind kind) {
    auto result = volume("disk-below", kind);
    result.facts.mountPoint = path;
    result.reasons = {std::string(pickedReason)};
    return result;
}

std::vector<std::string> ids(const std::vector<ClassifiedVolume>& volumes) {
    std::vector<std::string> result;
    for (const auto& each : volumes)
        result.push_back(each.id());
    return result;
}

/// A board over the same few volumes; every folder exists unless it is named here.
struct Board : VolumeBoard {
    VolumeBoard::Applied pass() {
        return apply(mounted, stored, [this](const auto& path) { return path != gone; });
    }

    const ClassifiedVolume& at(const std::string& id) const {
        for (const auto* list : {&lists().cards, &lists().destinations}) {
            if (const auto* found = findVolume(*list, id))
                return *found;
        }
        throw std::runtime_error("not listed: " + id);
    }

    std::vector<ClassifiedVolume> mounted = {
        volume("cardA", VolumeKind::CameraCard),  volume("disk1", VolumeKind::Destination),
        volume("odd", VolumeKind::Unknown),       volume("cardB", VolumeKind::CameraCard),
        volume("disk2", VolumeKind::Destination), volume("root", VolumeKind::System)};
    StoredDestinations stored;
    std::filesystem::path gone;
};

} // namespace

TEST(VolumeBoard, SortsByKindAndByWhatTheUserSays) {
    struct Case {
        const char* what;
        std::function<void(Board&)> correct;
        std::vector<std::string> cards;
        std::vector<std::string> destinations;
    };
    constexpr auto kCard = VolumeSide::Card;
    constexpr auto kDisk = VolumeSide::Destination;
    const auto nothing = [](Board&) {
    };
    const auto pickCard = [](Board& board, const char* place) {
        board.addPicked(kCard, folder(place, VolumeKind::CameraCard));
    };
    const auto pickDisk = [](Board& board, const char* place) {
        board.addPicked(kDisk, folder(place, VolumeKind::Destination));
    };
    // clang-format off
    const std::vector<Case> cases = {
        {"as they are", nothing, {"cardA", "cardB"}, {"disk1", "disk2"}},
        {"an unknown one as card", [&](Board& b) { b.treatAs(kCard, "odd"); }, {"cardA", "odd", "cardB"}, {"disk1", "disk2"}},
        {"a system one as destination", [&](Board& b) { b.treatAs(kDisk, "root"); }, {"cardA", "cardB"}, {"disk1", "disk2", "root"}},
        {"a destination as card", [&](Board& b) { b.treatAs(kCard, "disk1"); }, {"cardA", "disk1", "cardB"}, {"disk2"}},
        {"a card stays a card", [&](Board& b) { b.treatAs(kDisk, "cardA"); }, {"cardA", "cardB"}, {"disk1", "disk2"}},
        {"the last word counts", [&](Board& b) { b.treatAs(kDisk, "odd"); b.treatAs(kCard, "odd"); }, {"cardA", "odd", "cardB"}, {"disk1", "disk2"}},
        {"folders come last, two of one disk side by side", [&](Board& b) { pickCard(b, "/x/1"); pickCard(b, "/x/2"); pickDisk(b, "/x/3"); }, {"cardA", "cardB", "/x/1", "/x/2"}, {"disk1", "disk2", "/x/3"}},
        {"a folder is what it was picked as last", [&](Board& b) { pickCard(b, "/x/1"); pickDisk(b, "/x/1"); }, {"cardA", "cardB"}, {"disk1", "disk2", "/x/1"}},
        {"the place of a volume is listed once", [&](Board& b) { pickCard(b, "/media/cardA"); pickDisk(b, "/media/cardB"); }, {"cardA", "cardB"}, {"disk1", "disk2"}},
        {"what is removed is hidden", [&](Board& b) { b.pass(); b.remove(kCard, b.at("cardA")); b.remove(kDisk, b.at("disk2")); }, {"cardB"}, {"disk1"}},
        {"what was removed comes back where it is wanted", [&](Board& b) { b.pass(); b.remove(kCard, b.at("cardA")); b.remove(kDisk, b.at("disk2")); b.treatAs(kCard, "cardA"); b.treatAs(kCard, "disk2"); }, {"cardA", "cardB", "disk2"}, {"disk1"}},
        {"a hidden place can be picked as a folder", [&](Board& b) { b.pass(); b.remove(kCard, b.at("cardA")); pickCard(b, "/media/cardA"); }, {"cardB", "/media/cardA"}, {"disk1", "disk2"}},
    };
    // clang-format on
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        Board board;
        testCase.correct(board);
        board.pass();
        EXPECT_EQ(ids(board.lists().cards), testCase.cards);
        EXPECT_EQ(ids(board.lists().destinations), testCase.destinations);
        EXPECT_THAT(ids(board.lists().unknownVolumes), ElementsAre("odd", "root"));
    }
}

TEST(VolumeBoard, HidesAVolumeWhileItStaysMounted) {
    Board board;
    board.pass();
    board.remove(VolumeSide::Card, board.at("cardA"));
    board.pass();
    board.pass();
    EXPECT_THAT(ids(board.lists().cards), ElementsAre("cardB"));
    const auto card = board.mounted.front();
    board.mounted.erase(board.mounted.begin());
    board.pass();
    board.mounted.push_back(card);
    board.pass();
    EXPECT_THAT(ids(board.lists().cards), ElementsAre("cardB", "cardA"));
}

TEST(VolumeBoard, ForgetsAFolderThatIsGone) {
    Board board;
    board.addPicked(VolumeSide::Card, folder("/x/1", VolumeKind::CameraCard));
    board.addPicked(VolumeSide::Destination, folder("/x/2", VolumeKind::Destination));
    board.pass();
    board.gone = "/x/2";
    board.pass();
    board.gone.clear();
    board.pass();
    EXPECT_THAT(ids(board.lists().destinations), ElementsAre("disk1", "disk2")) << "for good";
    board.remove(VolumeSide::Card, board.at("/x/1"));
    board.addPicked(VolumeSide::Card, folder("/x/1", VolumeKind::CameraCard));
    board.pass();
    EXPECT_THAT(ids(board.lists().cards), ElementsAre("cardA", "cardB", "/x/1"))
        << "a removed folder is not hidden";
}

TEST(VolumeBoard, LetsGoOfWhatDisappears) {
    Board board;
    board.pass();
    board.selection(VolumeSide::Card).ids = {"cardA", "cardB"};
    board.selection(VolumeSide::Card).focused = "cardA";
    board.selection(VolumeSide::Destination).ids = {"disk1", "disk2"};
    const auto both = board.mounted;
    std::erase_if(board.mounted,
                  [](const auto& each) { return each.id() == "cardA" || each.id() == "disk1"; });
    board.pass();
    EXPECT_EQ(board.selection(VolumeSide::Card), (Selection{{"cardB"}, "cardB"}));
    EXPECT_EQ(board.selection(VolumeSide::Destination), (Selection{{"disk2"}, {}}));
    board.mounted = both;
    const auto applied = board.pass();
    EXPECT_EQ(board.selection(VolumeSide::Card).ids, (VolumeIDs{"cardB"}))
        << "a tick does not come back";
    EXPECT_EQ(board.selection(VolumeSide::Destination).ids, (VolumeIDs{"disk2"}));
    EXPECT_EQ(applied.appeared, (VolumeIDs{"cardA", "disk1"}));
    EXPECT_THAT(applied.newCards, IsEmpty()) << "a card is new once";
    EXPECT_THAT(board.pass().appeared, IsEmpty()) << "nothing has changed";

    // Another card in the slot of the one that was ticked.
    auto& inSlot = *std::find_if(board.mounted.begin(), board.mounted.end(),
                                 [](const auto& each) { return each.id() == "cardB"; });
    inSlot.facts.identity = FolderIdentity{.device = 1, .inode = 2, .mount = 3};
    board.pass();
    EXPECT_TRUE(board.selection(VolumeSide::Card).contains("cardB")) << "the same, as far as known";
    inSlot.facts.identity->mount = 4;
    EXPECT_EQ(board.pass().appeared, (VolumeIDs{"cardB"}));
    EXPECT_THAT(board.selection(VolumeSide::Card).ids, IsEmpty());
}

TEST(VolumeBoard, RestoresDestinationsWhereNoneIsTicked) {
    struct Case {
        const char* what;
        StoredDestinations stored;
        std::vector<std::string> mounted;
        VolumeIDs ticked;
    };
    const std::vector<Case> cases = {
        {"those of last time", {{"disk2", "gone"}, "disk1"}, {"disk1", "disk2"}, {"disk2"}},
        {"the older form", {{"gone"}, "disk1"}, {"disk1", "disk2"}, {"disk1"}},
        {"the only one", {{}, "gone"}, {"disk2"}, {"disk2"}},
        {"none of two", {{}, std::nullopt}, {"disk1", "disk2"}, {}},
        {"all of last time", {{"disk1", "disk2"}, {}}, {"disk1", "disk2"}, {"disk1", "disk2"}},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        Board board;
        board.mounted.clear();
        for (const auto& id : testCase.mounted)
            board.mounted.push_back(volume(id, VolumeKind::Destination));
        board.stored = testCase.stored;
        board.pass();
        EXPECT_EQ(board.selection(VolumeSide::Destination).ids, testCase.ticked);
    }
}

TEST(VolumeBoard, KnowsDisksAgainByTheirFileSystems) {
    const auto with = [](const std::string& device, const std::string& uuid, VolumeKind kind) {
        auto result = volume(device, kind);
        result.facts.volumeUUID = uuid;
        return result;
    };
    const auto ticked = [](Board& board) {
        board.pass();
        return board.selection(VolumeSide::Destination).ids;
    };
    constexpr auto kDisk = VolumeKind::Destination;
    Board board;
    board.mounted = {with("sdb1", "A", kDisk)};
    EXPECT_EQ(ticked(board), (VolumeIDs{"sdb1"}));
    EXPECT_EQ(board.lastingDestIDs(), (VolumeIDs{"UUID=A"}));
    board.stored.ids = {"UUID=A"};
    board.mounted = {with("sdb1", "B", kDisk)};
    EXPECT_EQ(ticked(board), (VolumeIDs{})) << "another one under the same name";
    board.mounted.push_back(with("sdc1", "A", kDisk));
    EXPECT_EQ(ticked(board), (VolumeIDs{"sdc1"})) << "the same one under another name";
    // Without a lasting name, the folder that is mounted tells them apart.
    auto nameless = volume("sdd1", kDisk);
    nameless.facts.identity = FolderIdentity{.device = 1, .inode = 2, .mount = 3};
    board.mounted = {nameless};
    board.stored.ids = {"sdd1"};
    EXPECT_EQ(ticked(board), (VolumeIDs{"sdd1"}));
    board.mounted[0].facts.identity->mount = 4;
    EXPECT_EQ(ticked(board), (VolumeIDs{}));
    // Nor does what was said of the one before hold for it.
    board.remove(VolumeSide::Destination, board.at("sdd1"));
    board.mounted[0].facts.identity->mount = 5;
    board.mounted[0].kind = VolumeKind::CameraCard;
    EXPECT_EQ(board.pass().newCards.size(), 1U);
    EXPECT_THAT(board.pass().newCards, IsEmpty());
    board.mounted[0].facts.identity->mount = 6;
    EXPECT_EQ(board.pass().newCards.size(), 1U) << "another card, as far as anybody can tell";
    // The names of both become known later.
    for (const auto* uuid : {"E", "F"}) {
        board.mounted[0].facts.volumeUUID = uuid;
        EXPECT_THAT(board.pass().newCards, IsEmpty());
        board.mounted[0].facts.volumeUUID.reset();
        EXPECT_EQ(board.pass().newCards.size(), 1U);
    }

    board.mounted = {with("mmcblk0p1", "X", VolumeKind::CameraCard)};
    EXPECT_EQ(board.pass().newCards.size(), 1U);
    board.selection(VolumeSide::Card).ids = {"mmcblk0p1"};
    board.mounted = {with("mmcblk0p1", "Y", VolumeKind::CameraCard)};
    EXPECT_EQ(board.pass().newCards.size(), 1U) << "another card in the slot";
    EXPECT_THAT(board.selection(VolumeSide::Card).ids, IsEmpty());
    board.mounted = {with("mmcblk0p1", "X", VolumeKind::CameraCard)};
    EXPECT_THAT(board.pass().newCards, IsEmpty());

    // What a person wanted as a destination is one on any other day.
    board.mounted = {with("sda1", "S", VolumeKind::System)};
    board.pass();
    board.treatAs(VolumeSide::Destination, "sda1");
    Board nextDay;
    nextDay.treatAsDestinations(board.wantedDestIDs());
    nextDay.mounted = {with("sde1", "S", VolumeKind::System)};
    nextDay.pass();
    EXPECT_THAT(ids(nextDay.lists().destinations), ElementsAre("sde1"));
    board.treatAs(VolumeSide::Card, "sda1");
    EXPECT_THAT(board.wantedDestIDs(), IsEmpty());
}

TEST(VolumeBoard, ListsWhatCannotBeWrittenToAndNeverTicksIt) {
    Board board;
    auto locked = volume("sdb1", VolumeKind::Unknown);
    locked.facts.isExternal = true;
    locked.facts.writeObstacle = WriteObstacle::NoPermission;
    board.mounted = {locked};
    board.stored.ids = {"sdb1", "/x/1", "/x/2"};
    board.addPicked(VolumeSide::Destination,
                    pickedFolder(locked.facts, "/x/1", VolumeKind::Destination));
    auto bare = folder("/x/2", VolumeKind::Destination);
    bare.isBare = true;
    board.addPicked(VolumeSide::Destination, bare);
    board.pass();
    EXPECT_THAT(ids(board.lists().destinations), ElementsAre("sdb1", "/x/1", "/x/2"));
    for (const auto& listed : board.lists().destinations)
        EXPECT_TRUE(VolumeTexts::warns(listed, VolumeSide::Destination)) << listed.id();
    EXPECT_EQ(VolumeTexts::subtitle(board.at("/x/1"), VolumeSide::Destination, ContentSizes(),
                                    L10n(AppLanguage::English)),
              L10n(AppLanguage::English).mayNotWriteToDisk());
    EXPECT_THAT(board.selection(VolumeSide::Destination).ids, IsEmpty());
    EXPECT_TRUE(pickedFolder(locked.facts, "/x/3", VolumeKind::CameraCard).facts.isWritable())
        << "nothing is written to a card";
}

TEST(VolumeBoard, RemovingMovesTheFocus) {
    Board board;
    board.pass();
    EXPECT_EQ(board.selectedCard(), nullptr) << "no card is ticked by itself";
    board.selection(VolumeSide::Card) = {{"cardB"}, "cardA"};
    board.remove(VolumeSide::Card, board.at("cardA"));
    EXPECT_EQ(board.selection(VolumeSide::Card).focused, "cardB") << "to a ticked one";
    board.pass();
    board.remove(VolumeSide::Card, board.at("cardB"));
    EXPECT_FALSE(board.selection(VolumeSide::Card).focused);

    Board other;
    other.pass();
    other.selection(VolumeSide::Card).focused = "cardB";
    other.remove(VolumeSide::Card, other.at("cardB"));
    EXPECT_EQ(other.selection(VolumeSide::Card).focused, "cardA") << "else to another one";
}

TEST(VolumeBoard, KeepsTheListsOrderAndFindsTheCardInFocus) {
    Board board;
    board.pass();
    board.selection(VolumeSide::Card).ids = {"cardB", "cardA"};
    EXPECT_THAT(ids(board.selected(VolumeSide::Card)), ElementsAre("cardA", "cardB"));
    board.selection(VolumeSide::Card).focused = "cardB";
    EXPECT_EQ(board.selectedCard()->id(), "cardB");
    board.selection(VolumeSide::Card).focused = "long gone";
    EXPECT_EQ(board.selectedCard()->id(), "cardA");
}

TEST(VolumeBoard, FillsInSizesThatAreNotKnown) {
    Board board;
    board.mounted[1].facts.freeBytes = 7;
    board.addPicked(VolumeSide::Destination, folder("/x/1", VolumeKind::Destination));
    board.pass();
    board.applyCapacity("disk1", 100, 50);
    board.applyCapacity("disk2", 100, 50);
    board.applyCapacity("/x/1", 100, 50);
    EXPECT_EQ(board.at("disk1").facts.totalBytes, 100);
    EXPECT_EQ(board.at("disk1").facts.freeBytes, 7) << "a known figure stays";
    EXPECT_EQ(board.at("disk2").facts.freeBytes, 50);
    board.pass();
    EXPECT_EQ(board.at("/x/1").facts.freeBytes, 50) << "remembered with the folder";
    EXPECT_EQ(board.at("disk2").facts.freeBytes, 0) << "the machine's word is back";
}
