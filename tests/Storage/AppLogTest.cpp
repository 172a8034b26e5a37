#include "Storage/AppLog.h"

#include "Offload/OffloadSettings.h"
#include "Storage/SupportPaths.h"
#include "support/Files.h"

#include <gmock/gmock.h>

#include <cstdlib>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::MatchesRegex;

namespace {

/// Per-user folders of the test's own.
class SupportFolders : public ::testing::Test {
protected:
    SupportFolders() {
        for (const auto* variable : {"XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_DOCUMENTS_DIR"})
            ::setenv(variable, (folder / variable).c_str(), 1);
    }
    TemporaryFolder folder;
};

} // namespace

TEST_F(SupportFolders, LieWhereTheEnvironmentSays) {
    EXPECT_EQ(SupportPaths::databaseURL(), folder / "XDG_DATA_HOME/Slatewise DIT/dit.sqlite");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "XDG_DATA_HOME/Slatewise DIT"));
    EXPECT_EQ(SupportPaths::defaultReportsDirectory(), folder / "XDG_DOCUMENTS_DIR/SlatewiseDIT");
    EXPECT_FALSE(std::filesystem::exists(folder / "XDG_DOCUMENTS_DIR"));

    OffloadSettings settings;
    settings.outputFolderPath = " \n";
    EXPECT_EQ(SupportPaths::reportsArchive(settings), SupportPaths::defaultReportsDirectory());
    EXPECT_TRUE(std::filesystem::is_directory(SupportPaths::defaultReportsDirectory()));
    settings.outputFolderPath = "  " + (folder / "chosen").native() + "\n";
    EXPECT_EQ(SupportPaths::reportsArchive(settings), folder / "chosen");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "chosen"));
}

TEST_F(SupportFolders, LogAppendsOneLineAtATimeToTheDaysFile) {
    AppLog::append("first");
    AppLog::append("second\nline \xff");
    const auto logs = folder / "XDG_STATE_HOME/Logs/Slatewise DIT";
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(logs))
        files.push_back(entry.path());
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].filename(), "dit-" + Clock::localText(Clock::now(), "yyyy-MM-dd") + ".log");
    EXPECT_THAT(
        readFile(files[0]),
        MatchesRegex("\\[20[0-9T:-]+Z\\] first\n\\[20[0-9T:-]+Z\\] second␊line \xef\xbf\xbd\n"));
}

TEST_F(SupportFolders, ALogThatCannotBeWrittenCostsTheLineAlone) {
    writeFile(folder / "XDG_STATE_HOME", "a file in the folder's place");
    AppLog::append("lost");
    EXPECT_EQ(readFile(folder / "XDG_STATE_HOME"), "a file in the folder's place");
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
