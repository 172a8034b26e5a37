#include "Batch/FolderOverlap.h"
#include "support/Files.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

ClassifiedVolume volumeOf(const std::filesystem::path& path) {
    ClassifiedVolume volume;
    volume.facts.mountPoint = path;
    volume.facts.volumeName = path.filename();
    return volume;
}

} // namespace

TEST(FolderOverlap, SeesWhereFoldersReallyLie) {
    const TemporaryFolder folder;
    for (const auto* name : {"card/DCIM", "cardinal", "elsewhere"})
        std::filesystem::create_directories(folder / name);
    std::filesystem::create_directory_symlink(folder / "card/DCIM", folder / "link");
    const BindMount bound(folder / "card/DCIM", folder / "bound");
    struct Case {
        const char* outer;
        const char* inner;
        bool contains;
    };
    const std::vector<Case> cases = {
        {"card", "card", true},          {"card", "card/", true},
        {"card", "card/DCIM", true},     {"card/DCIM", "card", false},
        {"card", "cardinal", false},     {"card", "elsewhere", false},
        {"card", "card/new/deep", true}, {"card", "elsewhere/../card/x", true},
        {"card", "link/x", true},        {"link", "card/DCIM", true},
        {"card", "bound", true},         {"card", "bound/new", true},
        {"bound", "card/DCIM/x", true},  {"bound", "card", false},
        {"bound", "cardinal", false},
    };
    for (const auto& [outer, inner, contains] : cases) {
        EXPECT_EQ(FolderOverlap::contains(folder / outer, folder / inner), contains)
            << outer << " " << inner;
    }

    // There, one folder answers to all of these.
    const MountedVolume disk(MountedVolume::FileSystem::ExFat, 8 << 20);
    for (const auto* name : {"Card/DCIM", "Cardinal"})
        std::filesystem::create_directories(disk / name);
    EXPECT_TRUE(FolderOverlap::contains(disk / "card", disk / "CARD/dcim/new"));
    EXPECT_FALSE(FolderOverlap::contains(disk / "card", disk / "CARDINAL"));
}

TEST(FolderOverlap, RefusesACopyIntoItsOwnSource) {
    struct Case {
        const char* what;
        const char* card;
        const char* destination;
        const char* pathTemplate;
        bool verifyOnly;
        const char* message;
    };
    const std::vector<Case> cases = {
        {"side by side", "A", "D", "{Dest}/{CardName}", false, nullptr},
        {"the same folder", "A", "A", "{Dest}/x", false, "The destination A lies on the card A"},
        {"a folder of the card", "A", "A/backup", "{Dest}/x", false, "lies on the card A"},
        {"even when only hashing", "A", "A/backup", "{Dest}/x", true, "lies on the card A"},
        {"a template that leads into the card", "A", "D", "/A/x", false, "lies on the card A"},
        {"reports that a link leads onto the card", "A", "planted", "{Dest}/x", true,
         "lies on the card A"},
        {"an archive that a link leads onto the card", "archived", "D", "{Dest}/x", true,
         "The archive of reports"},
        {"a card on the destination", "D/A", "D", "{Dest}/x", false, nullptr},
        {"a card in its session's folder", "D/x/A", "D", "{Dest}/x", false, "D/x)"},
        {"a session that is hashed where it lies", "D/x/A", "D", "{Dest}/x", true, nullptr},
    };
    BatchPlan doubled;
    doubled.cards = {volumeOf("/A")};
    doubled.destinations = {volumeOf("/D"), volumeOf("/E"), volumeOf("/x/../D/")};
    EXPECT_THAT(FolderOverlap::find(doubled, Clock::now()).value_or(""),
                HasSubstr("/D and /x/../D/ are the same folder"));
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "planted");
    std::filesystem::create_symlink("../A", folder / "planted/reports");
    std::filesystem::create_directory_symlink("archived", folder / "archive");
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        for (const auto* name : {testCase.card, testCase.destination})
            std::filesystem::create_directories(folder / name);
        BatchPlan plan;
        plan.cards = {volumeOf(folder / "unrelated"), volumeOf(folder / testCase.card)};
        plan.destinations = {volumeOf(folder / testCase.destination)};
        plan.settings.folderTemplate = testCase.pathTemplate;
        if (plan.settings.folderTemplate.starts_with('/'))
            plan.settings.folderTemplate = folder.path().native() + plan.settings.folderTemplate;
        plan.settings.verifyOnly = testCase.verifyOnly;
        plan.settings.outputFolderPath = folder / "archive";
        const auto message = FolderOverlap::find(plan, Clock::now());
        ASSERT_EQ(message.has_value(), testCase.message != nullptr) << message.value_or("");
        if (message) {
            EXPECT_THAT(*message, HasSubstr(testCase.message));
        }
    }
}
