#include "Reports/ReportFolder.h"
#include "Reports/PassingSet.h"

#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Reports/ReportWriter.h"
#include "support/Files.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <sys/stat.h>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::UnorderedElementsAre;

namespace {

constexpr auto* kID = "12345678-9abc-def0-1234-56789abcdef0";
constexpr auto* kOtherID = "12345678-9abd-DEF0-1234-56789ABCDEF1";
constexpr auto* kName = "2026-03-14-121502-A_Unit-CamA-A001";

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

class ReportFolders : public ::testing::Test {
protected:
    ReportFolders() { std::filesystem::create_directories(disk); }

    /// A report set as older versions left it, with something of its own in its CSV file.
    void leaveSet(const std::filesystem::path& root, const std::string& id,
                  const std::filesystem::path& mountPoint, const std::string& folderName = "") {
        SessionManifest manifest;
        manifest.sessionID = id;
        manifest.startedAt = *Clock::fromIso8601("2026-03-14T09:15:02Z");
        manifest.card.name = "A001";
        manifest.card.camera = "CamA";
        manifest.card.ekip = "A  Unit";
        manifest.destination.mountPoint = mountPoint.native();
        const auto set = root / (folderName.empty() ? id : folderName);
        // Rows are of no interest, and may say what nobody knows any more.
        auto text = ReportWriter::isoEncode(manifest);
        text.replace(text.find("[]"), 2, R"([{"verify_status": "ok", "of": {"depth": [[]]}}])");
        writeFile(set / "manifest.json", text);
        writeFile(set / "inventory.csv", "of " + id);
    }

    TemporaryFolder folder;
    std::filesystem::path archive = folder / "archive";
    std::filesystem::path disk = folder / "disk";
};

} // namespace

TEST_F(ReportFolders, NamesAreReadableAndFitForAnyDisk) {
    const auto started = *Clock::fromIso8601("2026-03-14T09:15:02Z");
    const std::string forty(40, 'n');
    const struct {
        std::string ekip, camera, card, expected;
    } cases[] = {
        {"A Unit", "ALEXA 35", "A001C002", "A_Unit-ALEXA_35-A001C002"},
        {"A  Unit", " A/B ", "x", "A_Unit-A-B-x"},
        {"A   _ Unit", "a:b*?c", "x\r\ny", "A_Unit-a-b--c-x--y"},
        {"", " ... ", "_.-", "unknown-unknown-unknown"},
        {"\t\n", "\\/", "\"<>|", "unknown-unknown-unknown"},
        {"--a-.b_-", "c", forty + "more", "a-.b-c-" + forty},
        {std::string(23, 'e') + " tail", "c", "x", std::string(23, 'e') + "_-c-x"},
        {"ççççççççççççççççççççççççç", "Ünal", "カード", "çççççççççççççççççççççççç-Ünal-カード"},
    };
    for (const auto& [ekip, camera, card, expected] : cases)
        EXPECT_EQ(ReportFolder::displayName(started, ekip, camera, card),
                  "2026-03-14-121502-" + expected);

    std::string many;
    for (int letter = 0; letter < 50; ++letter)
        many += "漢";
    const auto longest = ReportFolder::displayName(started, many, many, many);
    EXPECT_EQ(longest, Text::displayable(longest)) << "cut between letters";
    const RootFolder root(folder.path());
    for (int same = 0; same < 3; ++same)
        ReportFolder::putWhole(root, ReportFolder::claim(longest, kID, root, nullptr),
                               [](const auto&) {});
}

TEST_F(ReportFolders, EachSessionGetsANameOfItsOwn) {
    const RootFolder root(folder.path());
    EXPECT_EQ(ReportFolder::uniqueName("name", kID, root), "name");
    std::filesystem::create_directory(folder / "name");
    EXPECT_EQ(ReportFolder::uniqueName("name", kID, root), "name_12345678");
    EXPECT_EQ(ReportFolder::uniqueName("name", kID, root, "name"), "name");
    EXPECT_EQ(ReportFolder::uniqueName("name", kID, root, "other"), "name_12345678");
    writeFile(folder / "name_12345678", "");
    EXPECT_EQ(ReportFolder::uniqueName("name", kID, root), "name_12345678");
    writeFile(folder / "name_a-b", "");
    EXPECT_EQ(ReportFolder::uniqueName("name", "a-b", root), "name_ab");
    writeFile(folder / "name_ab", "");
    EXPECT_EQ(ReportFolder::uniqueName("name", "a-b", root), "name_a-b");
}

TEST_F(ReportFolders, OneNameIsClaimedOnBothSides) {
    const auto reports = disk / "reports";
    const RootFolder root(disk);
    std::filesystem::create_directories(archive / "ours");
    const auto claim = [&](const char* name) {
        return ReportFolder::claim(name, kID, RootFolder(archive), &root);
    };
    std::filesystem::create_directories(reports / "theirs");
    std::filesystem::create_directory_symlink(folder.path(), reports / "link");
    EXPECT_EQ(claim("free"), "free");
    EXPECT_EQ(claim("free"), "free_12345678");
    EXPECT_EQ(claim("free"), "free_12345678-2");
    for (const std::string name : {"ours", "theirs", "link"})
        EXPECT_EQ(claim(name.c_str()), name + "_12345678");
    EXPECT_FALSE(std::filesystem::exists(archive / "theirs"));
    for (const auto& name : namesIn(archive))
        EXPECT_TRUE(name == "ours" || std::filesystem::exists(reports / name)) << name;
    EXPECT_EQ(ReportFolder::claim("same", kID, RootFolder(reports), &root), "same");
    EXPECT_EQ(ReportFolder::claim("alone", kID, RootFolder(archive), nullptr), "alone");
    EXPECT_FALSE(std::filesystem::exists(reports / "alone"));
    writeFile(folder / "no place/reports", "");
    const RootFolder noPlace(folder / "no place");
    EXPECT_EQ(ReportFolder::claim("kept", kID, RootFolder(archive), &noPlace), "kept");
}

TEST_F(ReportFolders, ASetIsPutWholeOrNotAtAll) {
    const RootFolder root(disk);
    const std::filesystem::path set = "reports/set";
    const auto putHalf = [&](const RootFolder& passing) {
        writeFile(passing.path() / "manifest.json", "half");
        EXPECT_THAT(namesIn(disk / "reports"),
                    UnorderedElementsAre("set", passing.path().filename().native()));
        throw Error("odd");
    };
    std::filesystem::create_directories(disk / set);
    EXPECT_THROW(ReportFolder::putWhole(root, set, putHalf), Error);
    EXPECT_THAT(namesIn(disk / "reports"), UnorderedElementsAre("set")) << "still claimed";
    EXPECT_TRUE(std::filesystem::is_empty(disk / set));
    // Somebody else's is neither replaced nor taken away.
    writeFile(disk / set / "manifest.json", "theirs");
    EXPECT_THROW(ReportFolder::putWhole(root, set, putHalf), Error);
    EXPECT_THROW(ReportFolder::putWhole(root, set, [](const auto&) {}), Error);
    EXPECT_EQ(readFile(disk / set / "manifest.json"), "theirs");
    EXPECT_THAT(namesIn(disk / "reports"), UnorderedElementsAre("set"));
    // Nor is what others left where ours would pass taken for ours.
    writeFile(disk / "reports/.new.part/manifest.json", "theirs");
    ReportFolder::putWhole(root, "reports/new", [](const RootFolder& passing) {
        passing.writeAtomically("manifest.json", "ours");
    });
    EXPECT_EQ(readFile(disk / "reports/new/manifest.json"), "ours");
    EXPECT_EQ(readFile(disk / "reports/.new.part/manifest.json"), "theirs");

    EXPECT_TRUE(ReportFolder::clear(root, "reports/new"));
    EXPECT_TRUE(ReportFolder::clear(root, "reports/none"));
    writeFile(disk / "reports/new/manifest.json", "back again");
    std::filesystem::create_directory(disk / "reports/new/inventory.csv");
    EXPECT_FALSE(ReportFolder::clear(root, "reports/new")) << "not all of it goes";
    EXPECT_FALSE(std::filesystem::exists(disk / "reports/new/manifest.json"));

    const auto blocked = disk / "reports/blocked";
    PassingSet passing(root, "reports/blocked");
    passing.putInPlace();
    writeFile(blocked / "manifest.json", "whole");
    EXPECT_TRUE(passing.takeBack());
    EXPECT_TRUE(std::filesystem::is_empty(blocked));
    std::filesystem::create_directory(blocked / "manifest.json");
    EXPECT_FALSE(passing.takeBack()) << "some of it stays";
}

TEST_F(ReportFolders, WhatAKilledProgramLeftGoesWhenNobodyCanBeAtIt) {
    const auto root = std::make_shared<const RootFolder>(disk);
    const auto reports = disk / "reports";
    std::filesystem::create_directory(archive);
    const auto age = [](const std::filesystem::path& place, int hours) {
        std::filesystem::last_write_time(place, std::filesystem::file_time_type::clock::now() -
                                                    std::chrono::hours(hours));
    };
    const auto leave = [&](const std::filesystem::path& place, const std::string& name, int hours) {
        writeFile(place / name / "manifest.json", "half");
        writeFile(place / name / "inventory.csv.x.tmp", "half");
        age(place / name, hours);
    };
    const auto part = [](const std::string& name) {
        return "." + name + ".part";
    };
    const std::string other = "2026-03-15-121502-A_Unit-CamA-A001";
    leave(archive, part(kName), 25);
    leave(reports, part(other), 25);
    for (const auto& claimed : {archive / kName, reports / kName, reports / other}) {
        std::filesystem::create_directories(claimed);
        age(claimed, 25);
    }
    // One that resists keeps none of the others there.
    std::filesystem::create_directories(reports / part("2026-03-13-121502-odd") / "x.tmp");
    age(reports / part("2026-03-13-121502-odd"), 25);
    // Not long ago, in work, somebody else's, or with more in it than ours ever had.
    leave(reports, part("2026-03-16-121502-new"), 23);
    leave(reports, part("2026-03-16-121502-locked"), 25);
    const auto lock =
        root->below(reports.filename() / part("2026-03-16-121502-locked")).tryToLock();
    leave(reports, ".theirs.part", 25);
    leave(reports, "2026-03-16-121502-set", 25);
    std::filesystem::create_directories(reports / "2026-03-16-121502-claim");
    writeFile(archive / other / "manifest.json", "whole");
    const auto before = namesIn(reports).size();

    ReportFolder::removeLeftovers(RootFolder(archive), std::vector{root});
    EXPECT_THAT(namesIn(archive), UnorderedElementsAre(other));
    EXPECT_EQ(namesIn(reports).size(), before - 3);
    for (const auto& gone : {part(other), other, std::string(kName)})
        EXPECT_FALSE(std::filesystem::exists(reports / gone)) << gone;
}

TEST_F(ReportFolders, AnIDIsToldFromAName) {
    EXPECT_TRUE(ReportFolder::isOpaqueSessionID(kID));
    EXPECT_TRUE(ReportFolder::isOpaqueSessionID("ABCDEF01-2345-6789-ABCD-EF0123456789"));
    for (const auto* name :
         {"", "12345678", "123456789abcdef0123456789abcdef0",
          "{12345678-9abc-def0-1234-56789abcdef0}", "12345678-9abc-def0-1234-56789abcdef",
          "g2345678-9abc-def0-1234-56789abcdef0", "123456789-abc-def0-1234-56789abcdef0", kName})
        EXPECT_FALSE(ReportFolder::isOpaqueSessionID(name)) << name;
}

TEST_F(ReportFolders, OldNamesBecomeReadableOnceAndReachTheDisk) {
    leaveSet(archive, kID, disk);
    leaveSet(archive, kOtherID, folder / "not mounted");
    // Of two machines with one disk each names its sets by itself.
    leaveSet(archive, "87654321-9abc-def0-1234-56789abcdef0", disk);
    const auto third = std::string(kName) + "_87654321";
    leaveSet(disk / "reports", kOtherID, disk, third);
    // An archive may be a link.
    std::filesystem::rename(archive, folder / "elsewhere");
    std::filesystem::create_directory_symlink(folder / "elsewhere", archive);
    leaveSet(archive, kID, disk, "already readable");
    ReportFolder::migrateReadableNames(archive);
    const auto second = std::string(kName) + "_12345678";
    for (int times = 0; times < 2; ++times) {
        EXPECT_THAT(namesIn(archive),
                    UnorderedElementsAre(kName, second, third, "already readable"));
        EXPECT_THAT(namesIn(disk / "reports"), UnorderedElementsAre(kName, third));
        EXPECT_EQ(readFile(disk / "reports" / third / "inventory.csv"),
                  std::string("of ") + kOtherID);
        EXPECT_EQ(readFile(archive / kName / "inventory.csv"), std::string("of ") + kID);
        EXPECT_EQ(readFile(archive / second / "inventory.csv"), std::string("of ") + kOtherID);
        EXPECT_EQ(readFile(disk / "reports" / kName / "inventory.csv"), std::string("of ") + kID);
        ReportFolder::migrateReadableNames(archive);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "not mounted"));
}

TEST_F(ReportFolders, ADisksOwnFoldersKeepTheirFiles) {
    leaveSet(disk / "reports", kID, disk);
    ReportFolder::migrateDisk(disk);
    EXPECT_THAT(namesIn(disk / "reports"), UnorderedElementsAre(kName));
    EXPECT_THAT(namesIn(disk / "reports" / kName),
                UnorderedElementsAre("manifest.json", "inventory.csv"));
    EXPECT_EQ(readFile(disk / "reports" / kName / "inventory.csv"), std::string("of ") + kID);

    // What a foreign manifest names is not touched, be it another disk or a way to one.
    const MountedVolume elsewhere(MountedVolume::FileSystem::Ext4, 8 << 20);
    std::filesystem::create_directory_symlink(elsewhere.path(), disk / "link");
    leaveSet(disk / "reports", kOtherID, elsewhere.path());
    ReportFolder::migrateDisk(disk);
    leaveSet(disk / "reports", kOtherID, disk / "link");
    ReportFolder::migrateDisk(disk);
    EXPECT_FALSE(std::filesystem::exists(elsewhere / "reports"));
}

TEST_F(ReportFolders, AManifestOfAnyLengthIsReadAndNoneFillsTheMemory) {
    const auto lengthen = [&](const std::string& id, const std::string& rows) {
        leaveSet(archive, id, disk);
        auto text = readFile(archive / id / "manifest.json");
        const auto end = text.find("}}]");
        text.insert(end + 2, rows);
        writeFile(archive / id / "manifest.json", text);
    };
    std::string rows;
    while (rows.size() < (40 << 20))
        rows += ",\n{\"relative_path\": \"clip\"}";
    lengthen(kID, rows);
    lengthen(kOtherID, ",\"" + std::string(40 << 20, 'x') + "\"");
    ReportFolder::migrateReadableNames(archive);
    EXPECT_THAT(namesIn(archive), UnorderedElementsAre(kName, kOtherID));
}

TEST_F(ReportFolders, WhatCannotBeMigratedStaysAndHoldsUpNothing) {
    const auto id = [](char last) {
        return std::string("00000000-0000-0000-0000-00000000000") + last;
    };
    std::filesystem::create_directories(archive / id('0'));
    writeFile(archive / id('1') / "manifest.json", "{\"card\":");
    writeFile(archive / id('2'), "a file");
    std::filesystem::create_directory_symlink(disk, archive / id('3'));
    std::filesystem::create_directories(archive / id('4'));
    ASSERT_EQ(::mkfifo((archive / id('4') / "manifest.json").c_str(), 0600), 0);
    std::filesystem::create_directories(archive / id('5') / "manifest.json");
    const MountedVolume inTheWay(MountedVolume::FileSystem::Ext4, 8 << 20, archive / id('8'), "");
    // A name that only a look at the disk would have avoided.
    writeFile(archive / kName / "x", "");
    writeFile(archive / (std::string(kName) + "_00000000") / "x", "");
    leaveSet(archive, id('6'), disk);
    leaveSet(archive, kID, disk);
    std::filesystem::create_directories(disk);
    writeFile(disk / "reports", "a file where a folder should be");

    ReportFolder::migrateReadableNames(archive);
    EXPECT_THAT(namesIn(archive),
                UnorderedElementsAre(id('0'), id('1'), id('2'), id('3'), id('4'), id('5'), id('6'),
                                     id('8'), kName, std::string(kName) + "_00000000",
                                     std::string(kName) + "_12345678"));
    ReportFolder::migrateReadableNames(folder / "missing");
    ReportFolder::migrateDisk(disk);

    // What a disk only leads to is none of its own.
    leaveSet(folder / "outside", id('7'), disk);
    std::filesystem::remove(disk / "reports");
    std::filesystem::create_directory_symlink(folder / "outside", disk / "reports");
    ReportFolder::migrateDisk(disk);
    EXPECT_THAT(namesIn(folder / "outside"), UnorderedElementsAre(id('7')));
}
