#include "Volumes/DiskUtilClient.h"

#include "Volumes/CameraSignatures.h"
#include "Volumes/PropertyReaders.h"
#include "support/Files.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
constexpr auto kLowest = std::numeric_limits<std::int64_t>::lowest();

VolumeFacts factsFrom(const PropertyList& plist) {
    return DiskUtilClient::factsFromPlist(plist, "/nowhere/A001");
}

} // namespace

TEST(PropertyReaders, ReadWhateverTypeAValueHas) {
    struct Case {
        PropertyValue value;
        std::optional<std::string> string;
        std::int64_t int64;
        bool boolean;
    };
    const Case cases[] = {
        {std::string(" A001\n"), "A001", 0, false},
        {std::string(" \t "), std::nullopt, 0, false},
        {std::string("1"), "1", 0, false},
        {true, "1", 1, true},
        {false, "0", 0, false},
        {std::int64_t(-7), "-7", -7, true},
        {std::uint64_t(1) << 63, "9223372036854775808", kLargest, true},
        {1.9, "1.9", 1, true},
        {-1.9, "-1.9", -1, true},
        {0.25, "0.25", 0, true},
        {1e19, "1e+19", 0, true},
        {-std::ldexp(1, 63), "-9.223372036854776e+18", kLowest, true},
        {std::ldexp(1, 63), "9.223372036854776e+18", 0, true},
        {std::numeric_limits<double>::quiet_NaN(), "nan", 0, true},
    };
    for (const auto& [value, string, int64, boolean] : cases) {
        EXPECT_EQ(PropertyReaders::string(&value), string);
        EXPECT_EQ(PropertyReaders::int64(&value), int64) << string.value_or("blank");
        EXPECT_EQ(PropertyReaders::boolean(&value), boolean) << string.value_or("blank");
    }
    EXPECT_EQ(PropertyReaders::string(nullptr), std::nullopt);
    EXPECT_EQ(PropertyReaders::int64(nullptr), 0);
    EXPECT_FALSE(PropertyReaders::boolean(nullptr));
}

TEST(DiskUtilClient, TakesEachFactFromTheFirstKeyThatHasIt) {
    const auto facts = factsFrom({{"VolumeName", std::string("Card")},
                                  {"DeviceIdentifier", std::string("sdb1")},
                                  {"VolumeUUID", std::string("1234-ABCD")},
                                  {"FileSystemName", std::string("ExFAT")},
                                  {"FilesystemUserVisibleName", std::string("another")},
                                  {"Protocol", std::string("USB")},
                                  {"TotalSize", std::int64_t(0)},
                                  {"Size", std::uint64_t(64)},
                                  {"VolumeSize", std::int64_t(32)},
                                  {"VolumeFreeSpace", std::int64_t(-1)},
                                  {"FreeSpace", 16.5},
                                  {"External", true},
                                  {"Removable", false},
                                  {"RemovableMedia", true},
                                  {"Writable", false}});
    VolumeFacts expected;
    expected.mountPoint = "/nowhere/A001";
    expected.volumeName = "Card";
    expected.deviceIdentifier = "sdb1";
    expected.volumeUUID = "1234-ABCD";
    expected.fileSystem = "ExFAT";
    expected.protocolName = "USB";
    expected.totalBytes = 64;
    expected.freeBytes = 16;
    expected.isRemovable = true;
    expected.isExternal = true;
    EXPECT_EQ(facts, expected);
    EXPECT_EQ(facts.id(), "sdb1");

    // The best key of each list wins over the others.
    const auto best = factsFrom({{"FilesystemName", std::string("APFS")},
                                 {"FileSystemName", std::string("apfs")},
                                 {"BusProtocol", std::string("SATA")},
                                 {"Protocol", std::string("USB")},
                                 {"TotalSize", std::int64_t(4)},
                                 {"APFSContainerSize", std::int64_t(8)},
                                 {"APFSContainerFreeSpace", std::int64_t(2)},
                                 {"Removable", std::int64_t(1)},
                                 {"Internal", true}});
    EXPECT_EQ(best.fileSystem, "APFS");
    EXPECT_EQ(best.protocolName, "SATA");
    EXPECT_EQ(best.totalBytes, 4);
    EXPECT_EQ(best.freeBytes, 2);
    EXPECT_TRUE(best.isInternal && best.isRemovable);
}

TEST(DiskUtilClient, SaysLittleOfAVolumeThatNobodyKnows) {
    for (const auto& plist : {PropertyList{}, PropertyList{{"VolumeName", std::string("  ")},
                                                           {"DeviceIdentifier", std::string(" ")},
                                                           {"VolumeUUID", std::string("\n")},
                                                           {"Writable", std::string("no")}}}) {
        EXPECT_EQ(factsFrom(plist), DiskUtilClient::plainFacts("/nowhere/A001"));
    }
    const auto plain = DiskUtilClient::plainFacts("/nowhere/A001/");
    EXPECT_EQ(plain.volumeName, "A001");
    EXPECT_EQ(plain.volumeUUID, std::nullopt);
    EXPECT_TRUE(plain.isWritable);
    EXPECT_EQ(DiskUtilClient::plainFacts("/").volumeName, "/");
}

TEST(DiskUtilClient, LooksAtTheFileSystemForWhatTheListLacks) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "DCIM");
    const auto space = std::filesystem::space(folder.path());
    const auto facts =
        DiskUtilClient::factsFromPlist({{"TotalSize", std::int64_t(0)}}, folder.path());
    EXPECT_EQ(facts.totalBytes, static_cast<std::int64_t>(space.capacity));
    EXPECT_GT(facts.freeBytes, 0);
    EXPECT_THAT(facts.signatures, ElementsAre("DCIM"));

    // The volume that holds a folder, by the machine's own word.
    const auto held = DiskUtilClient::facts(folder.path());
    EXPECT_FALSE(held.deviceIdentifier.empty());
    EXPECT_EQ(held.deviceIdentifier, DiskUtilClient::facts(folder / "DCIM").deviceIdentifier);
    EXPECT_EQ(held.mountPoint, folder.path());
}

TEST(DiskUtilClient, ListsFoldersOnly) {
    const TemporaryFolder root;
    EXPECT_THAT(DiskUtilClient::listMounts(root / "missing"), IsEmpty());
    std::filesystem::create_directory(root / "CARD");
    std::filesystem::create_directory(root / "name\nof \xff bytes");
    std::filesystem::create_directory(root / ".hidden");
    std::filesystem::create_directory_symlink(root / "CARD", root / "link");
    std::filesystem::create_directory_symlink(root / "nowhere", root / "dangling");
    writeFile(root / "file", "");
    EXPECT_THAT(DiskUtilClient::listMounts(root.path()),
                UnorderedElementsAre(root / "CARD", root / "name\nof \xff bytes"));
    EXPECT_THAT(DiskUtilClient::listMounts(root / "file"), IsEmpty());
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
