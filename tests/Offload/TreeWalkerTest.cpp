#include "Offload/TreeWalker.h"

#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Limit.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

/// A word for each entry, in order: "c:" will be copied, "s:" will not, "d:" is a folder.
std::string listing(const std::vector<InventoryEntry>& entries) {
    std::string words;
    for (const auto& entry : entries)
        words += (entry.isDirectory  ? "d:"
                  : entry.shouldCopy ? "c:"
                                     : "s:") +
                 entry.relativePath + " ";
    return words;
}

} // namespace

TEST(TreeWalker, ListsEverythingInByteOrderWithFacts) {
    const TemporaryFolder card;
    writeFile(card / "a", "12345");
    writeFile(card / "B", "");
    writeFile(card / "DCIM/clip.mov", "123");
    writeFile(card / "DCIM-notes", "");
    writeFile(card / ".hidden", "1");
    const auto entries = TreeWalker::walk(RootFolder(card.path()), {});

    std::vector<std::string> names;
    for (const auto& entry : entries)
        names.push_back(entry.relativePath);
    EXPECT_THAT(names, ElementsAre(".hidden", "B", "DCIM", "DCIM-notes", "DCIM/clip.mov", "a"));

    EXPECT_EQ(entries[2].sizeBytes, 0);
    EXPECT_EQ(entries[4].sizeBytes, 3);
    struct stat facts {};
    ASSERT_EQ(::stat((card / "a").c_str(), &facts), 0);
    EXPECT_EQ(entries[5].mtime, Instant(std::chrono::seconds(facts.st_mtim.tv_sec)) +
                                    std::chrono::microseconds(facts.st_mtim.tv_nsec / 1000));
}

TEST(TreeWalker, SkipRulesDecideByName) {
    const TemporaryFolder card;
    for (const auto* name : {"._A.mov", "deep/er/._B.mov", ".DS_Store", "x.DS_Store", ".ds_store",
                             ".Trashes/gone.mov", "A/CACHE/x.bin", "A/cache/y.bin"})
        writeFile(card / name, "1");

    EXPECT_EQ(
        listing(TreeWalker::walk(RootFolder(card.path()), TreeWalker::defaultSkipNames(),
                                 std::vector<std::string>{"CACHE"})),
        "s:.DS_Store d:.Trashes s:._A.mov c:.ds_store d:A "
        "d:A/CACHE d:A/cache c:A/cache/y.bin d:deep d:deep/er s:deep/er/._B.mov c:x.DS_Store ");

    EXPECT_THAT(listing(TreeWalker::walk(RootFolder(card.path()), {})),
                StartsWith("c:.DS_Store d:.Trashes c:.Trashes/gone.mov s:._A.mov "))
        << "companion files are skipped whatever the set says";

    EXPECT_TRUE(TreeWalker::shouldSkip("A/CACHE/x.bin", "x.bin", {"CACHE"}));
    EXPECT_FALSE(TreeWalker::shouldSkip("A/CACHES/x.bin", "x.bin", {"CACHE"}));
}

TEST(TreeWalker, LinksAreListedAndNeverWalkedInto) {
    const TemporaryFolder card;
    const TemporaryFolder elsewhere;
    writeFile(elsewhere / "outside/film.mov", "1234567");
    writeFile(card / "clip.mov", "12");
    std::filesystem::create_symlink(elsewhere / "outside/film.mov", card / "to-file");
    std::filesystem::create_symlink(elsewhere / "outside", card / "to-folder");
    std::filesystem::create_symlink("nowhere", card / "dangling");
    std::filesystem::create_symlink("loop", card / "loop");
    std::filesystem::create_symlink(".", card / "self");
    ASSERT_EQ(::mkfifo((card / "fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("fifo", card / "to-fifo");

    std::filesystem::create_symlink("clip.mov", card / "to-clip");
    writeFile(card / "deep/er/x", "1");
    std::filesystem::create_symlink("../../clip.mov", card / "deep/er/up");
    std::filesystem::create_symlink(card / "clip.mov", card / "deep/whole");

    std::vector<std::string> leadingOut;
    const auto entries =
        TreeWalker::walk(RootFolder(card.path()), {}, {},
                         {.unreadable = {}, .leadsOut = [&](const std::string& link) {
                              leadingOut.push_back(link);
                          }});
    EXPECT_EQ(listing(entries),
              "c:clip.mov s:dangling d:deep d:deep/er c:deep/er/up c:deep/er/x "
              "c:deep/whole c:fifo s:loop s:self c:to-clip s:to-fifo s:to-file s:to-folder ");
    for (const auto& entry : entries) {
        if (entry.relativePath == "to-clip") {
            EXPECT_EQ(entry.sizeBytes, 2) << "the size of what will be copied";
        }
    }
    EXPECT_THAT(leadingOut, ::testing::UnorderedElementsAre("to-file", "to-folder"));
    EXPECT_EQ(TreeWalker::copyableBytes(card.path(), {}), 9);
}

TEST(TreeWalker, ARootThatCannotBeListedIsNoEmptyCard) {
    TemporaryFolder card;
    const RootFolder root(card.path());
    std::filesystem::remove(card.path());
    EXPECT_THROW(TreeWalker::walk(RootFolder("/no/such/folder"), {}), PosixError);
    EXPECT_EQ(TreeWalker::copyableBytes("/no/such/folder", {}), 0);
    std::filesystem::create_directory(card.path());
    EXPECT_FALSE(root.isStillAtItsPath());
    writeFile(card / "file", "1");
    EXPECT_THROW(TreeWalker::walk(RootFolder(card / "file"), {}), PosixError);
}

TEST(TreeWalker, AnUnreadableFolderIsReported) {
    const TemporaryFolder card;
    writeFile(card / "locked/lost.mov", "1");
    writeFile(card / "open.mov", "1");
    std::filesystem::permissions(card / "locked", std::filesystem::perms::none);
    std::filesystem::permissions(card.path(), std::filesystem::perms::all);

    // Root reads every folder: look through the eyes of somebody else.
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        // From inside: the folders on the way may be closed to others.
        if (::chdir(card.path().c_str()) != 0)
            ::_exit(10);
        if (::geteuid() == 0 && ::seteuid(kNobody) != 0)
            ::_exit(11);
        std::vector<std::string> passedOver;
        const auto entries = TreeWalker::walk(RootFolder("."), {}, {},
                                              {.unreadable =
                                                   [&](const std::string& folder, int code) {
                                                       if (code == EACCES)
                                                           passedOver.push_back(folder);
                                                   },
                                               .leadsOut = {}});
        const bool isRight = passedOver == std::vector<std::string>{"locked"} &&
                             listing(entries) == "d:locked c:open.mov ";
        ::_exit(isRight ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    std::filesystem::permissions(card / "locked", std::filesystem::perms::owner_all);
    EXPECT_EQ(status, 0);
}

TEST(TreeWalker, NamesAreBytesAndTreesMayBeDeep) {
    const TemporaryFolder card;
    const std::string longest(255, 'n');
    writeFile(card / longest, "1");
    writeFile(card / "line\nend \"quoted\", <b>", "1");
    writeFile(card / "not utf-8 \xff\xfe", "1");
    // Deeper than a path can be long: only names relative to an open folder lead there.
    constexpr int kLevels = 30;
    int folder = ::open(card.path().c_str(), O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < kLevels; ++level) {
        ASSERT_EQ(::mkdirat(folder, longest.c_str() + 20, 0700), 0);
        const int next = ::openat(folder, longest.c_str() + 20, O_RDONLY | O_DIRECTORY);
        ::close(folder);
        folder = next;
    }
    ::close(::openat(folder, "bottom", O_WRONLY | O_CREAT, 0600));
    ::close(folder);

    const auto entries = TreeWalker::walk(RootFolder(card.path()), {});
    EXPECT_EQ(entries.size(), 3u + kLevels + 1u);
    EXPECT_THAT(listing(entries),
                AllOf(HasSubstr("line\nend \"quoted\", <b>"), HasSubstr("not utf-8 \xff\xfe")));
}

TEST(TreeWalker, ATreeMayBeDeeperThanFilesMayBeOpen) {
    constexpr int kLevels = 300;
    const TemporaryFolder card;
    std::filesystem::path deep = card.path();
    for (int level = 0; level < kLevels; ++level)
        deep /= "d";
    writeFile(deep / "clip.mov", "1");
    const Limit files(RLIMIT_NOFILE, kLevels / 2);
    EXPECT_EQ(TreeWalker::walk(RootFolder(card.path()), {}).size(), kLevels + 1u);
}

TEST(TreeWalker, NormalizesWhatAUserTypes) {
    const std::map<std::string, std::optional<std::string>> cases = {
        {"  Foo\\Bar\\  ", "Bar"}, {"/Volumes/CARD/CACHE/", "CACHE"},
        {"plain", "plain"},        {"two words", "two words"},
        {"/", std::nullopt},       {" .. ", std::nullopt},
        {"a/.", std::nullopt},     {"", std::nullopt},
        {"\n\t", std::nullopt},    {"…/Ünal///", "Ünal"},
    };
    for (const auto& [typed, name] : cases)
        EXPECT_EQ(TreeWalker::normalizeSkipName(typed), name) << typed;
}

TEST(TreeWalker, RelativePathOfAnItem) {
    using Case = std::tuple<const char*, const char*, const char*>;
    for (const auto& [item, base, expected] :
         {Case{"/a/b/c", "/a", "b/c"}, Case{"/a/b/c", "/a/", "b/c"}, Case{"/a", "/a/", ""},
          Case{"/a/./b/../c", "/a", "c"}, Case{"/ab/c", "/a", "c"}, Case{"/a/b", "/", "a/b"}})
        EXPECT_EQ(TreeWalker::relativePath(item, base), expected) << item << " under " << base;
}
