#include "Storage/AppLog.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Storage/SupportPaths.h"
#include "support/Files.h"
#include "support/Process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::MatchesRegex;

namespace {

class SupportFolders : public ::testing::Test {
protected:
    SupportFolders() { becomeUserIn(folder.path()); }
    TemporaryFolder folder;
};

} // namespace

TEST_F(SupportFolders, LieWhereTheEnvironmentSays) {
    EXPECT_EQ(SupportPaths::databaseURL(), folder / "data/Slatewise DIT/dit.sqlite");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "data/Slatewise DIT"));
    EXPECT_EQ(SupportPaths::defaultReportsDirectory(), folder / "documents/SlatewiseDIT");
    EXPECT_FALSE(std::filesystem::exists(folder / "documents"));

    OffloadSettings settings;
    settings.outputFolderPath = " \n";
    EXPECT_EQ(SupportPaths::reportsArchive(settings), SupportPaths::defaultReportsDirectory());
    EXPECT_TRUE(std::filesystem::is_directory(SupportPaths::defaultReportsDirectory()));
    settings.outputFolderPath = "  " + (folder / "chosen").native() + "\n";
    EXPECT_EQ(SupportPaths::reportsArchive(settings), folder / "chosen");
    EXPECT_FALSE(std::filesystem::exists(folder / "chosen")) << "its disk may not be there";
}

TEST_F(SupportFolders, LogAppendsOneLineAtATimeToTheDaysFile) {
    AppLog::append("first");
    const auto file = folder / "state/Logs/Slatewise DIT" /
                      ("dit-" + Clock::localText(Clock::now(), "yyyy-MM-dd") + ".log");
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    AppLog::append("second\nline \xff");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    EXPECT_THAT(
        logOfUserIn(folder.path()),
        MatchesRegex("\\[20[0-9T:-]+Z\\] first\n\\[20[0-9T:-]+Z\\] second␊line \xef\xbf\xbd\n"));
}

TEST_F(SupportFolders, ALogThatCannotBeWrittenCostsTheLineAlone) {
    writeFile(folder / "state", "a file in the folder's place");
    AppLog::append("lost");
    EXPECT_EQ(readFile(folder / "state"), "a file in the folder's place");
    const auto pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(FileSystem::append(pipe, "held up for ever"), PosixError);
    const FileDescriptor reader(::open(pipe.c_str(), O_RDWR));
    std::filesystem::permissions(pipe, std::filesystem::perms(0620));
    FileSystem::append(pipe, "read");
    EXPECT_EQ(std::filesystem::status(pipe).permissions(), std::filesystem::perms(0620))
        << "not ours";
}

TEST(AppLog, PrunesDayFilesPastTheirTimeOnly) {
    const TemporaryFolder folder;
    for (const auto* name :
         {"dit-2026-01-01.log", "dit-2025-06-30.log", "dit-2026-01-02.log", "dit-notes.log",
          "dit-.log", "x-2020-01-01.log", "dit-2020-01-01.txt", "dit-2020-13-01.log"})
        writeFile(folder / name, "x");
    const auto thirtyDaysLater = *Clock::fromIso8601("2026-01-31T00:00:00Z");

    AppLog::prune(folder.path(), thirtyDaysLater);
    EXPECT_TRUE(std::filesystem::exists(folder / "dit-2026-01-01.log")) << "kept at that moment";
    EXPECT_FALSE(std::filesystem::exists(folder / "dit-2025-06-30.log"));

    AppLog::prune(folder.path(), thirtyDaysLater + std::chrono::seconds(1));
    EXPECT_FALSE(std::filesystem::exists(folder / "dit-2026-01-01.log"));
    for (const auto* kept : {"dit-2026-01-02.log", "dit-notes.log", "dit-.log", "x-2020-01-01.log",
                             "dit-2020-01-01.txt", "dit-2020-13-01.log"})
        EXPECT_TRUE(std::filesystem::exists(folder / kept)) << kept;
    AppLog::prune(folder / "missing", thirtyDaysLater);
}
