#include "VerifyProgram.h"

#include "Language/L10n.h"
#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Platform/Error.h"
#include "Reports/ReportWriter.h"
#include "Verify/TreeCheck.h"
#include "support/MappedFile.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

#include <climits>
#include <functional>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

using MediaHashList::Generation;
using MediaHashList::History;

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
            EXPECT_EQ(result.standardError.empty(), each.told.empty()) << result.standardError;
        }
    }
}

TEST_F(VerifyProgram, RefusesWhatWouldLeadElsewhere) {
    const auto root = offload();
    const std::string digest(64, 'a');
    writeFile(folder / "lists/checksums.sha256", digest + "  ../user/secret\n");
    writeFile(folder / "empty/checksums.sha256", "");
    writeFile(folder / "unchained/ascmhl/ascmhl_chain.xml", MediaHashList::writeChain({}));
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2},
        {{folder / "nowhere"}, 1},
        {{"--language", "de", root}, 2},
        {{folder / "A001"}, 1},
        {{folder / "lists"}, 1},
        {{folder / "empty"}, 1},
        {{folder / "unchained"}, 1},
        {{"--language", "tr", root}, 0},
    };
    for (const auto& [words, code] : cases) {
        const auto result = program("slatewise-verify", words);
        EXPECT_EQ(result.exitCode, code) << result.standardError;
        EXPECT_NE(result.standardError, "");
    }
    const auto turkish = program("slatewise-verify", {"--language", "tr", folder / "lists"});
    EXPECT_THAT(turkish.standardError, HasSubstr("bir yol, klasörünün dışına çıkıyor"));
    const auto misused = program("slatewise-verify", {"--language=tr", "--odd", root});
    EXPECT_THAT(misused.standardError, HasSubstr("Beklenmeyen sözcük: --odd"));
    const auto several = program("slatewise-verify", {folder / "nowhere", root});
    EXPECT_EQ(several.standardOutput, "failed\t" + (folder / "nowhere").native() + "\n");
    EXPECT_THAT(several.standardError, HasSubstr("all 4 files are there"));
    writeFile(reports / "manifest.json", "{");
    const auto damaged = program("slatewise-verify", {reports});
    EXPECT_THAT(damaged.standardError, HasSubstr("manifest.json: not a list that can be read\n"));
    (void)offload("--hash-only");
    for (const auto* const end : {"well", "badly"}) {
        const auto hashed = program("slatewise-verify", {reports});
        EXPECT_EQ(hashed.exitCode, 1) << end;
        EXPECT_THAT(hashed.standardError, HasSubstr("hashes of a card, and nothing was copied"));
        const auto text =
            Text::replaced(readFile(reports / "manifest.json"), "\"HASH\"", "\"FAIL\"");
        writeFile(reports / "manifest.json", Text::replaced(text, "\"hashed\"", "\"failed\""));
    }
}

TEST_F(VerifyProgram, ReadsTheDiskThatTheSessionWentToAndNoOther) {
    const auto verified = [&](const std::filesystem::path& path) {
        const auto result = program("slatewise-verify", {"--language", "en", path});
        EXPECT_EQ(result.standardOutput.empty(), result.exitCode == 0);
        return std::to_string(result.exitCode) + " " + result.standardError;
    };
    const auto archived = [&] {
        for (const auto& item : std::filesystem::recursive_directory_iterator(folder / "user")) {
            if (item.path().filename() == reports.filename())
                return item.path();
        }
        return std::filesystem::path();
    };
    const auto storedAs = [&](const std::filesystem::path& set) {
        return Verify::StoredSession{
            ReportWriter::isoDecode(readFile(set / "manifest.json")).sessionID, set, copy};
    };
    // Its own footage is gone, and where that was lies the copy of another disk.
    const auto disk = folder / "Disk";
    (void)offload();
    const auto moved = folder / "Moved";
    const auto stale = moved / "reports" / reports.filename();
    std::filesystem::rename(disk, moved);
    std::filesystem::remove_all(moved / copy.lexically_relative(disk));
    std::filesystem::create_directory(disk);
    const auto root = offload();
    EXPECT_THAT(verified(stale), ::testing::StartsWith("1 "));
    EXPECT_THAT(verified(reports), ::testing::StartsWith("0 "));
    EXPECT_THAT(verified(archived()), ::testing::StartsWith("0 "));

    const auto day = disk / *copy.lexically_relative(disk).begin();
    std::filesystem::rename(day, folder / "elsewhere");
    std::filesystem::create_directory_symlink(folder / "elsewhere", day);
    EXPECT_THAT(verified(reports), HasSubstr("a link stands on the way"));
    EXPECT_THAT(verified(archived()), HasSubstr("a link stands on the way"));
    std::filesystem::remove_all(disk);

    // Two disks of one name, one after the other, and then a copy of all that is on one.
    MountedVolume first(MountedVolume::FileSystem::Ext4, 32'000'000, disk, "");
    (void)offload();
    const auto session = storedAs(archived());
    const auto set = session.reports;
    first.unmount();
    MountedVolume second(MountedVolume::FileSystem::Ext4, 32'000'000, disk, "");
    (void)offload();
    EXPECT_THAT(verified(set), HasSubstr("another disk is there now"));
    EXPECT_THAT(verified(archived()), ::testing::StartsWith("0 "));
    const auto stored = storedAs(archived());
    EXPECT_EQ(Verify::findListsOf(stored).files.size(), 4U);
    EXPECT_TRUE(Verify::findListsOf(stored).troubles.empty());
    const auto sums = readFile(reports / "checksums.sha256");
    writeFile(reports / "checksums.sha256", sums.substr(sums.find('\n') + 1));
    EXPECT_EQ(Verify::findListsOf(stored).troubles.size(), 1U) << "the archive's is whole";
    writeFile(reports / "checksums.sha256", sums);
    const auto text = readFile(reports / "manifest.json");
    writeFile(reports / "manifest.json", Text::replaced(text, stored.id, session.id));
    EXPECT_THROW((void)Verify::findListsOf(stored), MediaHashList::ListError);
    writeFile(reports / "manifest.json", text);
    for (const auto& known : {set, std::filesystem::path()}) {
        EXPECT_THROW((void)Verify::findListsOf({session.id, known, session.root}),
                     MediaHashList::ListError);
    }
    const auto whole = folder / "whole";
    std::filesystem::copy(disk, whole, std::filesystem::copy_options::recursive);
    EXPECT_THAT(verified(whole / "reports" / reports.filename()), ::testing::StartsWith("0 "));
    EXPECT_THAT(verified(whole), ::testing::StartsWith("0 ")) << "with all the disk holds";
}

TEST_F(VerifyProgram, SaysWhatItCannotRestOnAndChecksTheRest) {
    // A card may have files that are named as our lists are.
    writeFile(folder / "A001/manifest.json", "{}");
    writeFile(folder / "A001/checksums.sha256", "theirs");
    struct Case {
        const char* name;
        /// Spoils the session's reports, or a tree with histories.
        std::function<void(const std::filesystem::path&)> spoil;
        /// The first that is told, where "@" stands for what was spoilt; empty: nothing.
        std::string told;
    };
    const Case ofReports[] = {
        {"nothing", [](const auto&) {}, ""},
        {"a manifest", [](const auto& set) { writeFile(set / "manifest.json", "{"); },
         "damaged\t@/manifest.json\n"},
        {"a manifest that is gone",
         [](const auto& set) { std::filesystem::remove(set / "manifest.json"); },
         "damaged\t@/manifest.json\n"},
        {"checksums", [](const auto& set) { writeFile(set / "checksums.sha256", "x"); },
         "damaged\t@/checksums.sha256\n"},
        {"checksums, emptied", [](const auto& set) { writeFile(set / "checksums.sha256", ""); },
         "damaged\t@/checksums.sha256\n"},
        {"a hash list that names less",
         [this](const auto&) {
             const RootFolder handle(copy);
             auto less = History::load(handle).generations().back();
             less.files.pop_back();
             std::filesystem::remove_all(copy / "ascmhl");
             (void)History(handle).append(less);
         },
         "damaged\t"},
        {"what its hash list would not have named",
         [this](const auto&) {
             const RootFolder handle(copy);
             auto less = History::load(handle).generations().back();
             less.ignored.push_back("PROXY");
             std::filesystem::remove_all(copy / "ascmhl");
             (void)History(handle).append(less);
             writeFile(copy / "PROXY/new.mov", "x");
             std::filesystem::create_symlink("nowhere", copy / "CLIP/link");
             writeFile(copy / "ascmhl/new.mov", "x");
         },
         "new\tCLIP/link\nnew\tPROXY/new.mov\nnew\tascmhl/new.mov\n"},
        {"a hash list that is gone",
         [this](const auto&) { std::filesystem::remove_all(copy / "ascmhl"); }, "damaged\t"},
        {"the only list that can hold a name",
         [](const auto& set) { std::filesystem::remove(set / "checksums.sha256"); },
         "missing\tbad \xef\xbf\xbd\n"},
        {"a failed run",
         [](const auto& set) {
             const auto text = readFile(set / "manifest.json");
             writeFile(set / "manifest.json",
                       Text::replaced(text, "\"status\": \"verified\"", "\"status\": \"failed\""));
         },
         "failed\t@/manifest.json\n"},
    };
    const auto check = [&](const Case& each, const std::filesystem::path& spoilt,
                           const std::filesystem::path& root) {
        const auto result = program("slatewise-verify", {"--quiet", root});
        EXPECT_EQ(result.exitCode, each.told.empty() ? 0 : 1) << result.standardError;
        EXPECT_THAT(result.standardOutput,
                    ::testing::StartsWith(Text::replaced(each.told, "@", spoilt.native())));
    };
    for (const auto& each : ofReports) {
        SCOPED_TRACE(each.name);
        const auto root = offload("--mhl");
        each.spoil(reports);
        check(each, reports, root);
        const auto above = program("slatewise-verify", {"--quiet", root.parent_path()});
        EXPECT_EQ(above.exitCode, each.told.empty() ? 0 : 1) << above.standardOutput;
        std::filesystem::remove_all(root);
        std::filesystem::remove_all(reports);
    }

    const Case ofHistories[] = {
        {"nothing", [](const auto&) {}, ""},
        {"no chain",
         [](const auto& root) { std::filesystem::remove(root / "CLIP/ascmhl/ascmhl_chain.xml"); },
         "damaged\t@/CLIP/ascmhl/ascmhl_chain.xml\n"},
        {"a chain that lost its last link",
         [](const auto& root) {
             writeFile(root / "CLIP/ascmhl/0002.mhl", MediaHashList::writeGeneration({}));
         },
         "damaged\t@/CLIP/ascmhl/0002.mhl\n"},
        {"an added file, left out further down",
         [](const auto& root) { writeFile(root / "x.tmp", "x"); }, "new\tx.tmp\n"},
        {"an empty folder that is gone",
         [](const auto& root) { std::filesystem::remove(root / "bare"); }, "missing\tbare\n"},
        {"lists that contradict each other",
         [](const auto& root) {
             const RootFolder handle(root);
             auto history = History::load(handle, "CLIP");
             auto other = history.generations().back();
             other.files.front().values.front().value = hashOf(HashFormat::XXH3, "other");
             (void)history.append(other);
         },
         "changed\tCLIP/b.wav\n"},
    };
    for (const auto& each : ofHistories) {
        SCOPED_TRACE(each.name);
        const auto root = folder / "histories" / each.name;
        writeFile(root / "CLIP/b.wav", "b");
        writeFile(root / "CLIP/x.tmp", "x");
        Generation inner;
        inner.ignored = {"*.tmp"};
        inner.files = {
            {"b.wav", 1, {}, {{HashFormat::XXH3, hashOf(HashFormat::XXH3, "b"), {}, {}}}}};
        const RootFolder handle(root);
        auto reference = History(handle, "CLIP").append(inner);
        reference.path = "CLIP/" + reference.path;
        std::filesystem::create_directory(root / "bare");
        const auto none = hashOf(HashFormat::XXH128, "");
        Generation outer;
        outer.folders = {{"bare", {}, {{HashFormat::XXH128, none, none}}}};
        outer.references = {reference};
        (void)History(handle).append(outer);
        each.spoil(root);
        check(each, root, root);
        writeFile(root / "CLIP/b.wav", "B");
        EXPECT_THAT(program("slatewise-verify", {"--quiet", root}).standardOutput,
                    HasSubstr("changed\tCLIP/b.wav\n"));
    }
}

TEST_F(VerifyProgram, AFolderThatWasWrittenAgainIsWhatItsNewestManifestSays) {
    std::filesystem::remove_all(offload());
    std::filesystem::remove(folder / "A001/CLIP/a.mov");
    // What the card can still name by a whole path, its copy cannot.
    std::filesystem::path deep;
    while ((folder / "A001" / deep).native().size() < PATH_MAX - 20)
        deep /= "level";
    writeFile(folder / "A001" / deep / "clip.mov", "deep");
    const auto root = offload();
    const auto result = program("slatewise-verify", {"--quiet", root});
    EXPECT_EQ(result.exitCode, 0) << result.standardOutput << result.standardError;
    // More levels than the standard library can remove.
    run({"rm", "-r", folder / "A001/level", root / "level"});
}

TEST_F(VerifyProgram, TellsOfWhatBecomesAnotherBeforeTheEnd) {
    const auto root = offload();
    const auto aside = folder / "aside";
    const auto tree = Verify::findLists(root);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)Verify::findLists(root, stop.get_token()), CancellationError);
    const auto meddle = [&](const OffloadPhase& phase) {
        const auto* const reading = std::get_if<Phase::Verifying>(&phase);
        if (!reading || reading->file != "line\nend" || std::filesystem::exists(aside))
            return;
        // All the others have been read.
        const auto date = std::filesystem::last_write_time(root / "CLIP/a.mov");
        writeFile(root / "CLIP/a.mov", bytesOf(2'000'001, 2));
        std::filesystem::last_write_time(root / "CLIP/a.mov", date);
        std::filesystem::remove(root / "CLIP/Şarkı ğ.wav");
        writeFile(root / "later", "x");
        std::filesystem::rename(root, aside);
        writeFile(root / "another", "disk");
    };
    std::vector<std::string> findings;
    const auto note = [&](const Verify::Finding& finding) {
        findings.push_back(std::string(rawValue(finding.difference)) + " " + finding.path + " " +
                           finding.explanation(L10n(AppLanguage::English)));
    };
    const auto result = Verify::check(tree, Verify::Keep::Nothing, {meddle, note}, {});
    EXPECT_EQ(result.filesEqual, 2);
    const std::string meanwhile = " while the check was going on";
    EXPECT_THAT(findings, ::testing::UnorderedElementsAre("changed CLIP/a.mov" + meanwhile,
                                                          "missing CLIP/Şarkı ğ.wav" + meanwhile,
                                                          "new later" + meanwhile,
                                                          "missing " + root.native() + " "));
}

TEST_F(VerifyProgram, AGenerationSaysWhatItCouldNotHold) {
    const auto root = offload();
    const auto first = program("slatewise-verify", {"--mhl", root});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_THAT(first.standardError, HasSubstr("cannot hold its name: bad \xef\xbf\xbd"));
    const MappedFile mapped(root / "CLIP/a.mov", 2'000'001);
    const auto second = program("slatewise-verify", {"--mhl", "--quiet", root});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_THAT(second.standardError, HasSubstr("may come from there (1): CLIP/a.mov"));
    const auto counted =
        run({"sh", "-c", "cat \"$0\"/ascmhl/0002_*.mhl | grep -c 'verified'", root});
    EXPECT_EQ(counted.standardOutput, "3\n");

    // As a card, it brings lists that grow again.
    std::filesystem::remove_all(folder / "A001");
    std::filesystem::rename(root, folder / "A001");
    const auto again = offload();
    EXPECT_THAT(told, HasSubstr("brings a hash list, which was not checked"));
    // Checksums of the folder that they lie in are one of its files from then on.
    const auto sums = folder / "sums";
    writeFile(sums / "a", "hello");
    writeFile(sums / "checksums.sha256", hashOf(HashFormat::SHA256, "hello") + "  a\n");
    writeFile(sums / "ascmhl/._0001.mhl", "what another system left");
    const auto read = Verify::check(Verify::findLists(sums), Verify::Keep::Tree, {}, {});
    EXPECT_EQ(read.bytesRead, 5) << "of the footage";
    for (const auto& each : {again, sums}) {
        for (const auto* const words : {"--mhl", "--quiet"})
            EXPECT_EQ(program("slatewise-verify", {words, each}).exitCode, 0) << words;
    }
    writeFile(sums / "checksums.sha256", "");
    EXPECT_EQ(program("slatewise-verify", {"--quiet", sums}).standardOutput,
              "changed\tchecksums.sha256\n");
}
