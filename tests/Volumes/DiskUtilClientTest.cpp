#include "Volumes/DiskUtilClient.h"

#include "Platform/Desktop/UserFolders.h"
#include "Volumes/CameraSignatures.h"
#include "support/Files.h"

#include <gmock/gmock.h>

#include <cstdlib>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

const DiskFacts kDisk = {.deviceName = "sdb1",
                         .label = " Card\n",
                         .uuid = "1234-ABCD",
                         .fileSystem = "exfat",
                         .fileSystemVersion = {},
                         .sizeBytes = 64};
const Mount kMount = {
    .line = {}, .root = "/", .mountPoint = "/nowhere/A001", .fileSystem = "exfat", .source = {}};

} // namespace

TEST(DiskUtilClient, NamesAVolumeByWhatTellsItApart) {
    struct Case {
        const char* what;
        std::string label, uuid, root, name, id, lastingID;
    };
    const Case cases[] = {
        {"a label", "\uFEFFCard\n", "12-AB", "/", "Card", "sdb1", "UUID=12-AB"},
        {"a blank one", " \t", "", "/", "A001", "sdb1", "sdb1"},
        {"a part", "R", "12-AB", "/@a/b", "R [@a/b]", "sdb1[/@a/b]", "UUID=12-AB/@a/b"},
        {"a part without a label", "", "", "/@a", "A001 [@a]", "sdb1[/@a]", "sdb1[/@a]"},
    };
    for (const auto& [what, label, uuid, root, name, id, lastingID] : cases) {
        auto disk = kDisk;
        auto mount = kMount;
        disk.label = label;
        disk.uuid = uuid;
        mount.root = root;
        const auto facts = DiskUtilClient::factsFrom("/nowhere/A001", &mount, disk);
        EXPECT_EQ(facts.volumeName, name) << what;
        EXPECT_EQ(facts.id(), id) << what;
        EXPECT_EQ(facts.lastingID(), lastingID) << what;
    }
    const auto unknown = DiskUtilClient::factsFrom("/nowhere/A001/", nullptr, std::nullopt);
    EXPECT_EQ(unknown.volumeName, "A001");
    EXPECT_EQ(unknown.id(), "/nowhere/A001/");
    EXPECT_EQ(DiskUtilClient::factsFrom("/", nullptr, std::nullopt).volumeName, "/");
}

TEST(DiskUtilClient, LooksAtTheFileSystemForWhatTheListLacks) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "DCIM");
    const auto space = std::filesystem::space(folder.path());
    auto facts = DiskUtilClient::factsFrom(folder.path(), nullptr, std::nullopt);
    DiskUtilClient::lookInto(facts);
    EXPECT_EQ(facts.totalBytes, static_cast<std::int64_t>(space.capacity));
    EXPECT_GT(facts.freeBytes, 0);
    EXPECT_THAT(facts.signatures, ElementsAre("DCIM"));

    // The volume that holds a folder, by the machine's own word.
    const auto held = DiskUtilClient::facts(folder.path());
    EXPECT_FALSE(held.deviceIdentifier.empty());
    EXPECT_EQ(held.deviceIdentifier, DiskUtilClient::facts(folder / "DCIM").deviceIdentifier);
    EXPECT_EQ(held.mountPoint, folder.path());
}

TEST(DiskUtilClient, ListsTheFoldersOfAllRoots) {
    const TemporaryFolder place;
    const auto root = place / "run/media/me";
    const auto other = place / "media/me";
    const VolumesRoot roots({root, other, place / "link"});
    EXPECT_THAT(DiskUtilClient::listMounts(roots), IsEmpty());
    std::filesystem::create_directories(root / "CARD");
    std::filesystem::create_directory_symlink(root, place / "link");
    std::filesystem::create_directory(root / "name\nof \xff bytes");
    std::filesystem::create_directory(root / ".hidden");
    std::filesystem::create_directory_symlink(root / "CARD", root / "card");
    std::filesystem::create_directory_symlink(root / "nowhere", root / "dangling");
    writeFile(root / "file", "");
    EXPECT_THAT(DiskUtilClient::listMounts(roots),
                UnorderedElementsAre(root / "CARD", root / "name\nof \xff bytes"));
    // The other root comes into being, and its link would list the first once more.
    std::filesystem::create_directories(other / "RAID");
    EXPECT_THAT(DiskUtilClient::listMounts(roots),
                UnorderedElementsAre(root / "CARD", root / "name\nof \xff bytes", other / "RAID"));
}

TEST(DiskUtilClient, LooksWhereBothKindsOfDesktopsMountForBothUsers) {
    const std::vector<std::filesystem::path> roots = {"/run/media", "/media"};
    ::unsetenv("SUDO_USER");
    const auto own = UserFolders::media(roots);
    ASSERT_THAT(own, SizeIs(2));
    EXPECT_EQ(own[0].parent_path(), "/run/media");
    EXPECT_EQ(own[1], "/media" / own[0].filename());
    ::setenv("SUDO_USER", "camera", 1);
    EXPECT_THAT(UserFolders::media(roots),
                ElementsAre(own[0], own[1], "/run/media/camera", "/media/camera"));
    for (const char* nobody : {"", "..", "../../etc"}) {
        ::setenv("SUDO_USER", nobody, 1);
        EXPECT_EQ(UserFolders::media(roots), own) << nobody;
    }
    ::unsetenv("SUDO_USER");
}

TEST(DiskUtilClient, SaysWhatKeepsThisUserFromWriting) {
    const TemporaryFolder folder;
    const auto obstacle = [&](const std::filesystem::path& place, const Mount& mount) {
        auto facts = DiskUtilClient::factsFrom(place, &mount, kDisk);
        DiskUtilClient::lookInto(facts);
        return facts.writeObstacle;
    };
    EXPECT_EQ(obstacle(folder.path(), kMount), WriteObstacle::None);
    auto readOnly = kMount;
    readOnly.isReadOnly = true;
    EXPECT_EQ(obstacle(folder.path(), readOnly), WriteObstacle::ReadOnly);
    EXPECT_EQ(obstacle(folder / "gone", kMount), WriteObstacle::NoAnswer);
    // Nobody, not even root, may write there.
    EXPECT_EQ(obstacle("/proc/sys", kMount), WriteObstacle::NoPermission);
}

TEST(CameraSignatures, AreFoundInTheOrderOfTheTable) {
    const TemporaryFolder root;
    EXPECT_THAT(CameraSignatures::detect(root / "missing"), IsEmpty());
    std::filesystem::create_directory(root / "PRIVATE");
    EXPECT_THAT(CameraSignatures::detect(root.path()), IsEmpty());
    for (const char* path : {"CLIP", "CONTENTS", "MISC", "CANONMSC", "BDMV", ".RDC", "XDROOT",
                             "PRIVATE/M4ROOT", "DCIM", "OTHER"})
        std::filesystem::create_directory(root / path);
    writeFile(root / "BPAV", "a file counts too");
    EXPECT_THAT(CameraSignatures::detect(root.path()),
                ElementsAre("DCIM", "PRIVATE/M4ROOT", "XDROOT", "BPAV", ".RDC", "BDMV", "CANONMSC",
                            "MISC", "CONTENTS", "CLIP"));
}
