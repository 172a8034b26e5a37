#include "Offload/MediaInfoCLI/MediaInfoCLI.h"

#include "Platform/TrustedPrograms.h"
#include "support/Files.h"
#include "support/MediaTool.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

std::vector<std::string> texts(const std::vector<std::filesystem::path>& paths) {
    return {paths.begin(), paths.end()};
}

class MediaInfoCLITest : public ::testing::Test {
protected:
    std::optional<std::string> run(const std::string& script,
                                   std::chrono::milliseconds limit = std::chrono::seconds(3)) {
        fake.says(script);
        auto tool = fake.tool();
        tool.limits.run = limit;
        return MediaInfoCLI::runJSON({folder / "A001.mxf", "A001.mxf"}, tool,
                                     [this](const std::string& line) { log.push_back(line); });
    }

    TemporaryFolder folder;
    FakeMediaInfo fake;
    std::vector<std::string> log;
};

} // namespace

TEST_F(MediaInfoCLITest, UsesWhateverJSONComesOut) {
    struct Case {
        const char* script;
        std::optional<std::string> json;
        std::vector<std::string> log;
        std::chrono::milliseconds limit = std::chrono::seconds(3);
    };
    constexpr std::chrono::milliseconds kWaitedOut{300};
    const Case cases[] = {
        {"echo banner; echo; printf '{\"a\": {}}'", "{\"a\": {}}", {}},
        {"printf '{}'; exit 1", "{}", {"MediaInfo CLI exit 1 for A001.mxf (2 bytes)"}},
        {"printf '{'; kill -SEGV $$", "{", {"MediaInfo CLI exit 11 for A001.mxf (1 bytes)"}},
        {"exit 0", std::nullopt, {"MediaInfo CLI exit 0 for A001.mxf (empty)"}},
        {"kill -SEGV $$", std::nullopt, {"MediaInfo CLI exit 11 for A001.mxf (empty)"}},
        {"echo no braces; exit 2", std::nullopt, {"MediaInfo CLI exit 2 for A001.mxf (10 bytes)"}},
        {"echo no braces", std::nullopt, {}},
        {"head -c 50000000 /dev/zero >&2; printf '{}'", "{}", {}},
        {"sleep 60", std::nullopt, {"MediaInfo CLI timed out: A001.mxf"}, kWaitedOut},
        {"exec >&- 2>&-; sleep 60",
         std::nullopt,
         {"MediaInfo CLI timed out: A001.mxf"},
         kWaitedOut},
    };
    run("printf '{}'");
    EXPECT_THAT(log, ElementsAre("MediaInfo CLI " + fake.path().native()));
    for (const auto& [script, json, lines, limit] : cases) {
        log.clear();
        EXPECT_EQ(run(script, limit), json) << script;
        EXPECT_EQ(log, lines) << script;
    }
}

TEST_F(MediaInfoCLITest, AsksTheSameWayInEveryLocale) {
    ::setenv("LC_ALL", "tr_TR.UTF-8", 1);
    const auto answer = run("printf '{'; printf '%s|' \"$@\"; pwd; echo $LC_ALL");
    ::unsetenv("LC_ALL");
    EXPECT_EQ(answer, "{--Output=JSON|--Full|--ParseSpeed=0|" + (folder / "A001.mxf").native() +
                          "|" + fake.path().parent_path().native() + "\nC.UTF-8\n");
}

TEST_F(MediaInfoCLITest, TellsOnceThatTheToolIsMissing) {
    MediaInfoCLI::Noted noted;
    const MediaInfoCLI::Tool missing{
        .candidates = {folder / "none", folder.path()}, .limits = {}, .noted = &noted};
    const auto note = [this](const std::string& line) {
        log.push_back(line);
    };
    for (int file = 0; file < 3; ++file)
        EXPECT_FALSE(MediaInfoCLI::runJSON({folder / "A001.mxf", "A001.mxf"}, missing, note));
    EXPECT_THAT(log, ElementsAre("MediaInfo CLI missing; MXF/R3D/BRAW metadata will be empty."));

    log.clear();
    writeFile(folder / "broken", "no program");
    std::filesystem::permissions(folder / "broken", std::filesystem::perms::owner_all);
    auto broken = missing;
    broken.candidates = {folder / "broken"};
    EXPECT_FALSE(MediaInfoCLI::runJSON({folder / "A001.mxf", "A001.mxf"}, broken, note));
    EXPECT_THAT(log, ElementsAre("MediaInfo CLI " + (folder / "broken").native(),
                                 ::testing::StartsWith("MediaInfo CLI failed to start: run ")));
}

TEST(MediaInfoCandidates, StandInTheirOrder) {
    const auto candidates = texts(MediaInfoCLI::candidateURLs("/a/B.app", "/opt/dit/bin/dit", {}));
    EXPECT_THAT(candidates,
                ElementsAre("/a/B.app/Contents/Helpers/mediainfo",
                            "/a/B.app/Contents/MacOS/mediainfo", "/a/B.app/Helpers/mediainfo",
                            "/opt/dit/bin/mediainfo", "/opt/dit/Helpers/mediainfo",
                            "/opt/dit/bin/Helpers/mediainfo", "/opt/dit/MacOS/mediainfo",
                            "/opt/homebrew/bin/mediainfo", "/usr/local/bin/mediainfo",
                            "/usr/bin/mediainfo"));

    EXPECT_TRUE(TrustedPrograms::isTrusted("/usr/bin/mediainfo"));
    EXPECT_TRUE(TrustedPrograms::isTrusted("/usr/bin/not yet/mediainfo"));
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    EXPECT_FALSE(TrustedPrograms::isTrusted(folder / "x/mediainfo")) << "others can write above it";
    std::filesystem::permissions(folder.path(), std::filesystem::perms::sticky_bit,
                                 std::filesystem::perm_options::add);
    EXPECT_FALSE(TrustedPrograms::isTrusted(folder / "x/mediainfo")) << "others can make it";
    writeFile(folder / "x/mediainfo", "");
    EXPECT_TRUE(TrustedPrograms::isTrusted(folder / "x/mediainfo")) << "others cannot swap it";
    writeFile(folder / "real/bin/dit", "");
    std::filesystem::create_symlink(folder / "real/bin/dit", folder / "dit");
    const auto started = texts(MediaInfoCLI::candidateURLs("/b", {}, folder / "dit"));
    EXPECT_EQ(started.at(3), folder / "real/bin/mediainfo");
    const auto built = texts(MediaInfoCLI::candidateURLs("/b", programsFolder() / "dit", {}));
    EXPECT_EQ(built.at(7), programsFolder() / "Vendor/MediaInfo/mediainfo");

    // A link beside the program: what it led to when it was looked at, and only what is trusted.
    const auto link = programsFolder() / "Helpers";
    std::filesystem::create_directory_symlink(folder / "x", link);
    const auto trusted = texts(MediaInfoCLI::Tool::usual().candidates);
    std::filesystem::permissions(folder / "x", std::filesystem::perms::all);
    const auto others = texts(MediaInfoCLI::Tool::usual().candidates);
    std::filesystem::remove(link);
    EXPECT_THAT(trusted, Contains((folder / "x/mediainfo").native()));
    EXPECT_THAT(others, Not(Contains((folder / "x/mediainfo").native())));
    for (const auto& found : {trusted, others})
        EXPECT_THAT(found, Not(Contains((link / "mediainfo").native())));
}
