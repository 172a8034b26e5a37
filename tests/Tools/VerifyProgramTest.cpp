#include "Platform/Text.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <functional>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

/// A verified session of a card with odd names, and the program that checks it again.
class VerifyProgram : public ::testing::Test {
protected:
    VerifyProgram() {
        writeFile(folder / "A001/CLIP/a.mov", bytesOf(2'000'001));
        writeFile(folder / "A001/CLIP/Şarkı ğ.wav", "ses");
        writeFile(folder / "A001/line\nend", "odd");
        writeFile(folder / "A001/bad \xff", "bytes");
        std::filesystem::create_directory(folder / "Disk");
    }

    ProcessResult program(const std::string& name, std::vector<std::string> words) {
        words.insert(words.begin(), (programsFolder() / name).native());
        return run(words, {{"XDG_DATA_HOME", folder / "user/data"},
                           {"XDG_STATE_HOME", folder / "user/state"},
                           {"XDG_CONFIG_HOME", folder / "user/config"},
                           {"XDG_DOCUMENTS_DIR", folder / "user/documents"},
                           {"LC_ALL", "C.UTF-8"}});
    }

    /// A fresh session; gives its folder, and notes that of its reports.
    std::filesystem::path offload() {
        const auto result =
            program("slatewise-offload", {"--quiet", "--to", folder / "Disk", folder / "A001"});
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        const auto fields = Text::pieces(result.standardOutput, '\t');
        reports = std::filesystem::path(Text::trimmed(fields[2]));
        return std::filesystem::path(fields[1]);
    }

    TemporaryFolder folder;
    std::filesystem::path reports;
};

} // namespace

TEST_F(VerifyProgram, TellsWhatIsNoLongerAsItWasByEveryList) {
    struct Case {
        const char* name;
        std::function<void(const std::filesystem::path&)> change;
        std::string told;
    };
    const Case cases[] = {
        {"nothing", [](const auto&) {}, ""},
        {"a byte",
         [](const auto& root) {
             auto bytes = bytesOf(2'000'001);
             bytes[1'234'567] = static_cast<char>(bytes[1'234'567] ^ 1);
             writeFile(root / "CLIP/a.mov", bytes);
         },
         "changed\tCLIP/a.mov\n"},
        {"missing", [](const auto& root) { std::filesystem::remove(root / "CLIP/Şarkı ğ.wav"); },
         "missing\tCLIP/Şarkı ğ.wav\n"},
        {"added", [](const auto& root) { writeFile(root / "new.mov", "x"); }, "new\tnew.mov\n"},
        {"renamed",
         [](const auto& root) {
             std::filesystem::rename(root / "CLIP/a.mov", root / "CLIP/b.mov");
         },
         "missing\tCLIP/a.mov\nnew\tCLIP/b.mov\n"},
        {"a link in its place",
         [this](const auto& root) {
             std::filesystem::remove(root / "CLIP/a.mov");
             std::filesystem::create_symlink(folder / "A001/CLIP/a.mov", root / "CLIP/a.mov");
         },
         "changed\tCLIP/a.mov\n"},
    };
    for (const auto& each : cases) {
        const auto root = offload();
        const auto withHistory = folder / "hashed" / each.name;
        std::filesystem::create_directories(withHistory.parent_path());
        ASSERT_EQ(program("slatewise-verify", {"--quiet", "--mhl", root}).exitCode, 0);
        std::filesystem::copy(root, withHistory, std::filesystem::copy_options::recursive);
        std::filesystem::remove(withHistory / "bad \xff");
        std::filesystem::remove_all(root / "ascmhl");
        each.change(root);
        each.change(withHistory);
        const std::vector<std::filesystem::path> ways = {root, reports, reports / "manifest.json",
                                                         reports / "checksums.sha256", withHistory};
        for (const auto& way : ways) {
            SCOPED_TRACE(std::string(each.name) + " " + way.native());
            const auto result = program("slatewise-verify", {"--quiet", way});
            EXPECT_EQ(result.exitCode, each.told.empty() ? 0 : 1) << result.standardError;
            EXPECT_EQ(result.standardOutput, each.told);
        }
    }
}

TEST_F(VerifyProgram, RefusesWhatWouldLeadElsewhere) {
    const auto root = offload();
    const std::string digest(64, 'a');
    writeFile(folder / "lists/checksums.sha256", digest + "  ../user/secret\n");
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2},
        {{folder / "nowhere"}, 2},
        {{"--language", "de", root}, 2},
        {{folder / "A001"}, 1},
        {{folder / "lists"}, 1},
        {{"--language", "tr", root}, 0},
    };
    for (const auto& [words, code] : cases) {
        const auto result = program("slatewise-verify", words);
        EXPECT_EQ(result.exitCode, code) << result.standardError;
        EXPECT_NE(result.standardError, "");
    }
    const auto told = program("slatewise-verify", {"--language", "tr", folder / "lists"});
    EXPECT_THAT(told.standardError, HasSubstr("bir yol, klasörünün dışına çıkıyor"));
}

TEST_F(VerifyProgram, AGenerationSaysWhatItCouldNotHold) {
    const auto root = offload();
    const auto first = program("slatewise-verify", {"--mhl", root});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_THAT(first.standardError, HasSubstr("cannot hold its name: bad \xef\xbf\xbd"));
    ASSERT_EQ(program("slatewise-verify", {"--mhl", root}).exitCode, 0);
    const auto counted =
        run({"sh", "-c", "cat \"$0\"/ascmhl/0002_*.mhl | grep -c 'verified'", root});
    EXPECT_EQ(counted.standardOutput, "3\n");

    // As a card, it brings lists that grow again.
    std::filesystem::remove_all(folder / "A001");
    std::filesystem::rename(root, folder / "A001");
    const auto again = offload();
    for (const auto* const words : {"--mhl", "--quiet"})
        EXPECT_EQ(program("slatewise-verify", {words, again}).exitCode, 0) << words;
}
