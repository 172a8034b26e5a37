#include "Platform/Files/RootFolder.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Process.h"
#include "support/Sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>

using namespace slatewise;
using namespace slatewise::test;
using Links = RootFolder::Links;

namespace {

/// 0 when it could be opened.
int codeOf(const RootFolder& root, const char* name, Links links, int flags = O_RDONLY) {
    try {
        (void)root.open(name, flags, links);
        return 0;
    } catch (const PosixError& failure) {
        return failure.code();
    }
}

/// What `openat2` answers in this test; 0: what it does.
class EveryKernel : public ::testing::TestWithParam<int> {
protected:
    TemporaryFolder outside;
    TemporaryFolder folder;
};

} // namespace

TEST_P(EveryKernel, NothingLeadsOutOfTheFolder) {
    writeFile(outside / "secret", "1");
    writeFile(folder / "in/file", "22");
    std::filesystem::create_symlink(outside.path(), folder / "out");
    std::filesystem::create_symlink(outside / "secret", folder / "in/secret");
    std::filesystem::create_symlink("../..", folder / "in/up");
    std::filesystem::create_symlink(
        "../../no-such-folder/../" / folder.path().filename() / "in/file", folder / "in/by");
    std::filesystem::create_symlink("file", folder / "in/near");
    std::filesystem::create_symlink(folder / "in/file", folder / "in/whole");
    std::filesystem::create_symlink("../.." / folder.path().filename() / "in/file",
                                    folder / "in/round");
    std::filesystem::create_symlink("whole", folder / "in/chain");
    std::filesystem::create_symlink("circle", folder / "in/circle");
    runWithout(SYS_openat2, GetParam(), [&] {
        const RootFolder root(folder.path());
        for (const auto links : {Links::Refuse, Links::FollowBeneath}) {
            EXPECT_EQ(codeOf(root, "in/file", links), 0);
            EXPECT_EQ(codeOf(root, "missing", links), ENOENT);
            for (const auto* out :
                 {"..", "in/../..", "/etc", "out/secret", "in/secret", "in/up", "in/by"})
                EXPECT_NE(codeOf(root, out, links), 0) << out;
        }
        for (const auto* back : {"in/near", "in/whole", "in/round", "in/chain"}) {
            EXPECT_EQ(codeOf(root, back, Links::Refuse), ELOOP) << back;
            EXPECT_EQ(codeOf(root, back, Links::FollowBeneath), 0) << back;
        }
        EXPECT_EQ(codeOf(root, "in/circle", Links::FollowBeneath), ELOOP);
        EXPECT_EQ(codeOf(root, "in/whole/file", Links::FollowBeneath), ENOTDIR);
        EXPECT_EQ(codeOf(root, "in/secret", Links::FollowBeneath), EXDEV);

        EXPECT_THROW(root.createFolders("out/new"), PosixError);
        EXPECT_THROW((void)root.createNewFolder("out/new"), PosixError);
        EXPECT_THROW(root.removeFile("out/secret"), PosixError);
        EXPECT_THROW(root.rename("in/file", "out/file"), PosixError);
        EXPECT_THROW((void)root.open("in/secret", O_WRONLY | O_CREAT), PosixError);
        root.removeFile("in/secret");
        EXPECT_FALSE(root.exists("in/secret"));
        root.createFolders("in/new/folders");
        root.rename("in/file", "in/new/folders/file");
        EXPECT_EQ(root.attributes("in/new/folders/file").sizeBytes, 2);
    });
    EXPECT_EQ(readFile(outside / "secret"), "1");
    EXPECT_FALSE(std::filesystem::exists(outside / "new"));
}

TEST_P(EveryKernel, NothingLeadsOntoAnotherVolume) {
    const auto place = folder / "in/mounted";
    std::filesystem::create_directories(place);
    runPrivileged({"mount", "-t", "tmpfs", "tmpfs", place});
    writeFile(place / "file", "1");
    runWithout(SYS_openat2, GetParam(), [&] {
        const RootFolder root(folder.path());
        EXPECT_EQ(codeOf(root, "in/mounted", Links::Refuse, O_PATH), EXDEV);
        EXPECT_EQ(codeOf(root, "in/mounted/file", Links::FollowBeneath), EXDEV);
        EXPECT_EQ(codeOf(RootFolder(place), "file", Links::Refuse), 0);
    });
    runPrivileged({"umount", place});
}

INSTANTIATE_TEST_SUITE_P(Kernels, EveryKernel, ::testing::Values(0, ENOSYS, EPERM),
                         [](const auto& answer) {
                             return answer.param == 0        ? "Current"
                                    : answer.param == ENOSYS ? "Old"
                                                             : "Sandboxed";
                         });

TEST(RootFolder, StaysTheFolderThatWasOpened) {
    const TemporaryFolder place;
    std::filesystem::create_directory(place / "disk");
    const RootFolder root(place / "disk");
    EXPECT_TRUE(root.isStillAtItsPath());
    std::filesystem::rename(place / "disk", place / "elsewhere");
    EXPECT_FALSE(root.isStillAtItsPath());
    std::filesystem::create_directory(place / "disk");
    EXPECT_FALSE(root.isStillAtItsPath());
    root.createFolders("new");
    EXPECT_TRUE(std::filesystem::exists(place / "elsewhere/new"));
    EXPECT_FALSE(std::filesystem::exists(place / "disk/new"));
}

// A reader may keep its device, and the system its mount, while another card is put in.
TEST(RootFolder, IsNotAtItsPathOnceAnotherMediumIs) {
    const TemporaryFolder place;
    for (const auto* medium : {"one", "other"}) {
        runPrivileged({"truncate", "--size=16M", place / medium});
        runPrivileged({"mkfs.ext4", "-q", place / medium});
    }
    std::filesystem::create_directory(place / "disk");
    runPrivileged({"mount", "-o", "loop,ro", place / "one", place / "disk"});
    {
        const RootFolder root(place / "disk");
        EXPECT_TRUE(root.isStillAtItsPath());
        runWithout(SYS_openat, EMFILE,
                   [&] { EXPECT_TRUE(root.isStillAtItsPath()) << "it is us who cannot look"; });
        runPrivileged({"python3", "-c",
                       "import fcntl, os, sys; device, medium = (os.open(name, os.O_RDONLY) for "
                       "name in sys.argv[1:]); fcntl.ioctl(device, 0x4C06, medium)",
                       BlockDevices::pathUnder(place / "disk"), place / "other"});
        EXPECT_FALSE(root.isStillAtItsPath());
    }
    runPrivileged({"umount", place / "disk"});
}
