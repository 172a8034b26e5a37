#include "VerifyProgram.h"

#include "Language/L10n.h"
#include "MediaHashList/ListError.h"
#include "Platform/Error.h"
#include "Verify/TreeCheck.h"

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

/// What may have become of a list.
struct Spoiling {
    const char* name;
    /// Spoils the session's reports, or a tree with histories.
    std::function<void(const std::filesystem::path&)> spoil;
    /// The first that is told, where "@" stands for what was spoilt, and "#" for the session's hash
    /// list; empty: nothing.
    std::string told;
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
             writeFile(root / "CLIP/a.dat", bytes);
         },
         "changed\tCLIP/a.dat\n"},
        {"missing", [](const auto& root) { std::filesystem::remove(root / "CLIP/Şarkı ğ.snd"); },
         "missing\tCLIP/Şarkı ğ.snd\n"},
        {"added", [](const auto& root) { writeFile(root / "new.dat", "x"); }, "new\tnew.dat\n"},
        {"renamed",
         [](const auto& root) {
             std::filesystem::rename(root / "CLIP/a.dat", root / "CLIP/b.dat");
         },
         "missing\tCLIP/a.dat\nnew\tCLIP/b.dat\n"},
        {"in another Unicode form",
         [](const auto& root) {
             std::filesystem::rename(root / "CLIP/Şarkı ğ.snd",
                                     root / "CLIP/S\u0327arkı g\u0306.snd");
         },
         ""},
        {"in another form, and changed",
         [](const auto& root) {
             std::filesystem::remove(root / "CLIP/Şarkı ğ.snd");
             writeFile(root / "CLIP/S\u0327arkı g\u0306.snd", "SES");
         },
         "changed\tCLIP/S\u0327arkı g\u0306.snd\n"},
        {"beside its other form",
         [](const auto& root) { writeFile(root / "CLIP/S\u0327arkı g\u0306.snd", "ses"); },
         "new\tCLIP/S\u0327arkı g\u0306.snd\n"},
        {"a link in its place",
         [this](const auto& root) {
             std::filesystem::remove(root / "CLIP/a.dat");
             std::filesystem::create_symlink(folder / "A001/CLIP/a.dat", root / "CLIP/a.dat");
         },
         "changed\tCLIP/a.dat\n"},
    };
    for (const auto& each : cases) {
        const auto root = offloadedAnew();
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
        if (!each.told.empty())
            continue;
        // What a check adds has the names as they are there, and goes with all older lists.
        for (const auto& way : {root, withHistory}) {
            for (const auto* const words : {"--mhl", "--quiet"})
                EXPECT_EQ(program("slatewise-verify", {words, way}).exitCode, 0) << each.name;
        }
    }
}

TEST_F(VerifyProgram, RefusesWhatWouldLeadElsewhere) {
    const auto root = offload();
    const std::string digest(64, 'a');
    writeFile(folder / "lists/checksums.sha256", digest + "  ../user/secret\n");
    writeFile(folder / "empty/checksums.sha256", "");
    writeFile(folder / "unchained/ascmhl/ascmhl_chain.xml", MediaHashList::writeChain({}));
    // Beside footage a manifest speaks of another place; by itself, of the copy.
    for (const auto* const name : {"archived", "beside", "both", "listed"}) {
        std::filesystem::copy(reports, folder / name);
        const bool hasFootage = std::string(name) != "archived";
        writeFile(folder / name / (hasFootage ? "clip.dat" : "._manifest.json"), "x");
    }
    std::filesystem::remove(folder / "beside/checksums.sha256");
    Generation other;
    other.files = {{"clip.dat", 1, {}, {{HashFormat::MD5, std::string(32, '0'), {}, {}}}}};
    (void)History(RootFolder(folder / "listed")).append(other);
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2},
        {{folder / "nowhere"}, 1},
        {{"--language", "de", root}, 2},
        {{folder / "A001"}, 1},
        {{folder / "lists"}, 1},
        {{folder / "empty"}, 1},
        {{folder / "unchained"}, 1},
        {{"--mhl", folder / "beside"}, 1},
        {{"--mhl", folder / "both"}, 1},
        {{"--mhl", folder / "both/checksums.sha256"}, 1},
        {{"--mhl", folder / "listed"}, 1},
        {{folder / "both/manifest.json"}, 0},
        {{folder / "archived"}, 0},
        {{"--language", "tr", root}, 0},
    };
    for (const auto& [words, code] : cases) {
        const auto result = program("slatewise-verify", words);
        EXPECT_EQ(result.exitCode, code) << result.standardError;
        EXPECT_NE(result.standardError, "");
    }
    EXPECT_FALSE(std::filesystem::exists(root / "ascmhl")) << "nobody named it";
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
    std::filesystem::resize_file(reports / "manifest.json", std::uintmax_t{1} << 31);
    EXPECT_THAT(program("slatewise-verify", {reports}).standardError, HasSubstr("too large for"));
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

TEST_F(VerifyProgram, SaysOnWhichReportsItCannotRestAndChecksTheRest) {
    // A card may have files that are named as our lists are.
    writeFile(folder / "A001/manifest.json", "{}");
    writeFile(folder / "A001/checksums.sha256", "theirs");
    const Spoiling cases[] = {
        {"nothing", [](const auto&) {}, ""},
        {"a manifest", [](const auto& set) { writeFile(set / "manifest.json", "{"); },
         "damaged\t@/manifest.json\n"},
        {"a manifest that is gone",
         [](const auto& set) { std::filesystem::remove(set / "manifest.json"); },
         "damaged\t@/manifest.json\n"},
        {"all of its lists gone",
         [](const auto& set) {
             for (const auto* const name : {"manifest.json", "inventory.csv", "checksums.sha256"})
                 std::filesystem::remove(set / name);
         },
         "damaged\t@/manifest.json\n"},
        {"a set that is hidden, behind a link",
         [](const auto& set) {
             std::filesystem::rename(set, set.parent_path() / ".hidden");
             std::filesystem::create_directory_symlink(".hidden", set);
         },
         "damaged\t@/manifest.json\n"},
        {"another name of a set",
         [](const auto& set) {
             std::filesystem::create_directory_symlink(set.filename(), set.parent_path() / "A001");
         },
         ""},
        {"a link in the place of all sets",
         [](const auto& set) {
             std::filesystem::rename(set.parent_path(), set.parent_path().parent_path() / "kept");
             std::filesystem::create_directory_symlink("kept", set.parent_path());
         },
         "damaged\t" + (folder / "Disk/reports").native() + "\n"},
        {"a file in the place of all sets",
         [](const auto& set) {
             std::filesystem::remove_all(set.parent_path());
             writeFile(set.parent_path(), "x");
         },
         "damaged\t" + (folder / "Disk/reports").native() + "\n"},
        {"a set that cannot be looked at",
         [](const auto& set) {
             std::filesystem::remove_all(set);
             std::filesystem::create_directory_symlink(set.filename(), set);
         },
         "damaged\t@/manifest.json\n"},
        {"checksums", [](const auto& set) { writeFile(set / "checksums.sha256", "x"); },
         "damaged\t@/checksums.sha256\n"},
        {"checksums with line ends of another system",
         [](const auto& set) {
             const auto list = set / "checksums.sha256";
             writeFile(list, Text::replaced(readFile(list) + "\n", "\n", "\r\n"));
         },
         ""},
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
         "damaged\t#\n"},
        {"what its hash list would not have named",
         [this](const auto&) {
             const RootFolder handle(copy);
             auto less = History::load(handle).generations().back();
             less.ignored.push_back("PROXY");
             std::filesystem::remove_all(copy / "ascmhl");
             (void)History(handle).append(less);
             writeFile(copy / "PROXY/new.dat", "x");
             std::filesystem::create_symlink("nowhere", copy / "CLIP/link");
             writeFile(copy / "ascmhl/new.tmp", "x");
             writeFile(copy / "ascmhl/01234567-89ab-4cde-8123-456789abcdef.tmp", "left over");
         },
         "new\tCLIP/link\nnew\tPROXY/new.dat\nnew\tascmhl/new.tmp\n"},
        {"reports of nobody's, further up",
         [this](const auto&) { writeFile(folder / "reports/A001/manifest.json", "{"); }, ""},
        {"a hash list that is gone",
         [this](const auto&) { std::filesystem::remove_all(copy / "ascmhl"); }, "damaged\t#\n"},
        {"the only list that can hold a name",
         [](const auto& set) {
             std::filesystem::remove(set / "checksums.sha256");
             std::filesystem::remove(set / "inventory.csv");
         },
         "damaged\t@/checksums.sha256\nmissing\tbad \xef\xbf\xbd\n"},
        {"a failed run",
         [](const auto& set) {
             const auto text = readFile(set / "manifest.json");
             writeFile(set / "manifest.json",
                       Text::replaced(text, "\"status\": \"verified\"", "\"status\": \"failed\""));
         },
         "failed\t@/manifest.json\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const auto root = offloadedAnew("--mhl");
        const auto list = root / "ascmhl" / History::load(RootFolder(root)).fileNames().back();
        each.spoil(reports);
        expectToldFirst(
            Text::replaced(Text::replaced(each.told, "@", reports.native()), "#", list.native()),
            root);
        const auto above = program("slatewise-verify", {"--quiet", root.parent_path()});
        EXPECT_EQ(above.exitCode, each.told.empty() ? 0 : 1) << above.standardOutput;
        const bool isNoted = std::filesystem::exists(folder / "reports");
        EXPECT_EQ(
            program("slatewise-verify", {root})
                    .standardError.find("Reports that are not this folder's could not be read") !=
                std::string::npos,
            isNoted);
        std::filesystem::remove_all(folder / "reports");
    }
}

TEST_F(VerifyProgram, SaysOnWhichHistoriesItCannotRestAndChecksTheRest) {
    const Spoiling cases[] = {
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
        {"a link, and what is no list among them",
         [](const auto& root) {
             std::filesystem::create_symlink("nowhere", root / "link");
             writeFile(root / "ascmhl/x.tmp", "x");
         },
         "new\tascmhl/x.tmp\nnew\tlink\n"},
        {"what a pattern takes back",
         [](const auto& root) { writeFile(root / "CLIP/wanted.tmp", "x"); },
         "new\tCLIP/wanted.tmp\n"},
        {"a file named as a folder of lists is",
         [](const auto& root) {
             const RootFolder handle(root);
             auto history = History::load(handle);
             auto next = history.generations().back();
             next.files = {{"x/ascmhl", 1, {}, {{HashFormat::MD5, std::string(32, '0'), {}, {}}}}};
             (void)history.append(next);
             next.files.clear();
             next.ignored = {"ascmhl", "ascmhl/"};
             (void)history.append(next);
         },
         "missing\tx/ascmhl\n"},
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
         "changed\tCLIP/b.snd\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const auto root = folder / "histories" / each.name;
        writeFile(root / "CLIP/b.snd", "b");
        writeFile(root / "CLIP/x.tmp", "x");
        Generation inner;
        inner.ignored = {"*.tmp", "!wanted.tmp"};
        inner.files = {
            {"b.snd", 1, {}, {{HashFormat::XXH3, hashOf(HashFormat::XXH3, "b"), {}, {}}}}};
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
        expectToldFirst(Text::replaced(each.told, "@", root.native()), root);
        writeFile(root / "CLIP/b.snd", "B");
        EXPECT_THAT(program("slatewise-verify", {"--quiet", root}).standardOutput,
                    HasSubstr("changed\tCLIP/b.snd\n"));
    }
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
        const auto date = std::filesystem::last_write_time(root / "CLIP/a.dat");
        writeFile(root / "CLIP/a.dat", bytesOf(2'000'001, 2));
        std::filesystem::last_write_time(root / "CLIP/a.dat", date);
        std::filesystem::remove(root / "CLIP/Şarkı ğ.snd");
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
    EXPECT_THAT(findings, ::testing::UnorderedElementsAre("changed CLIP/a.dat" + meanwhile,
                                                          "missing CLIP/Şarkı ğ.snd" + meanwhile,
                                                          "new later" + meanwhile,
                                                          "missing " + root.native() + " "));
}
