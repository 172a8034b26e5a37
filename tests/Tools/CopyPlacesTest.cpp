#include "VerifyProgram.h"

#include "MediaHashList/ListError.h"
#include "Reports/ReportWriter.h"
#include "Verify/ListedTree.h"
#include "support/MountedVolume.h"

#include <climits>

// Where a check finds the copy that a set of reports is of, and the reports of a copy.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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
    const auto gone = folder / "archive that is gone";
    EXPECT_EQ(Verify::findListsOf({stored.id, gone, stored.root}).files.size(), 4U);
    const auto sums = readFile(reports / "checksums.sha256");
    const auto end = sums.find('\n') + 1;
    writeFile(reports / "checksums.sha256", sums.substr(end));
    EXPECT_EQ(Verify::findListsOf(stored).troubles.size(), 1U) << "the archive's is whole";
    writeFile(reports / "checksums.sha256", sums.substr(end) + sums.substr(0, end));
    EXPECT_TRUE(Verify::findListsOf(stored).troubles.empty()) << "the same in another order";
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

    // What lies at the top of a disk speaks of that one, although the original is where it was.
    const MountedVolume twin(MountedVolume::FileSystem::Ext4, 32'000'000, folder / "twin", "");
    std::filesystem::copy(disk / "reports", twin / "reports",
                          std::filesystem::copy_options::recursive);
    EXPECT_THAT(verified(twin / "reports" / reports.filename()), ::testing::StartsWith("1 "));

    // The folder that a copy went to is gone; on its disk lies another under the same path.
    std::filesystem::create_directory(disk / "Backup");
    const auto line =
        program("slatewise-offload", {"--quiet", "--to", disk / "Backup", folder / "A001"})
            .standardOutput;
    const std::filesystem::path there = Text::trimmed(line.substr(line.rfind('\t') + 1));
    const auto backedUp = archived().parent_path() / there.filename();
    EXPECT_THAT(verified(backedUp), ::testing::StartsWith("0 "));
    std::filesystem::remove_all(disk / "Backup");
    EXPECT_THAT(verified(backedUp), ::testing::StartsWith("1 "));

    // The disk comes back under another name.
    const BindMount again(disk, folder / "again");
    second.unmount();
    // The folder that the copy went to might have been this one.
    std::filesystem::create_directory_symlink("nowhere", folder / "again/Disk");
    EXPECT_THAT(verified(archived()), ::testing::StartsWith("0 "));
    EXPECT_EQ(Verify::findListsOf(stored).root, folder / "again" / copy.lexically_relative(disk));
    EXPECT_THAT(verified(set), ::testing::StartsWith("1 ")) << "of the first, which is nowhere";
    EXPECT_THAT(verified(backedUp), ::testing::StartsWith("1 "));
}

TEST_F(VerifyProgram, AFolderThatWasWrittenAgainIsWhatItsNewestManifestSays) {
    std::filesystem::remove_all(offload());
    std::filesystem::remove(folder / "A001/CLIP/a.dat");
    // The clock is set back a century.
    auto first = readFile(reports / "manifest.json");
    for (const std::string field : {"\"started_at\": \"", "\"finished_at\": \""})
        first = Text::replaced(first, field + "20", field + "21");
    writeFile(reports / "manifest.json", first);
    // What the card can still name by a whole path, its copy cannot.
    std::filesystem::path deep;
    while ((folder / "A001" / deep).native().size() < PATH_MAX - 20)
        deep /= "level";
    writeFile(folder / "A001" / deep / "clip.dat", "deep");
    const auto root = offload();
    const auto result = program("slatewise-verify", {"--quiet", root});
    EXPECT_EQ(result.exitCode, 0) << result.standardOutput << result.standardError;
    EXPECT_THAT(result.standardError, HasSubstr("clock was set back"));
    // More levels than the standard library can remove.
    run({"rm", "-r", folder / "A001/level", root / "level"});
}

TEST_F(VerifyProgram, FindsWhatLiesInASessionsFolderAndUnderNamesThatNoListCanHold) {
    const auto json = [](const std::filesystem::path& path) {
        return Text::replaced(path.native(), "/", "\\/");
    };
    const auto outer = offload("--mhl");
    const auto named = reports;
    const auto inner = offload();
    const auto moved = outer / "inner";
    std::filesystem::rename(inner, moved);
    const auto manifest = reports / "manifest.json";
    writeFile(manifest, Text::replaced(readFile(manifest), json(inner), json(moved)));
    for (const auto& way : {outer, named, reports}) {
        const auto result = program("slatewise-verify", {"--quiet", way});
        EXPECT_EQ(result.exitCode, 0) << way << result.standardOutput << result.standardError;
    }
    // A disk of another system has a name in another form, be it one on the way to a session.
    const auto crew = offload("--crew=Şahin").parent_path().parent_path();
    ASSERT_EQ(crew.filename(), "Şahin");
    const auto formed = crew.parent_path() / "S\u0327ahin";
    std::filesystem::rename(crew, formed);
    for (const auto& way : {formed, formed / copy.lexically_relative(crew), reports}) {
        const auto result = program("slatewise-verify", {"--quiet", way});
        EXPECT_EQ(result.exitCode, 0) << way << result.standardOutput << result.standardError;
    }
    // A manifest shows names that are no UTF-8, and cannot hold them.
    const auto nested = folder / "A001/odd \xff";
    writeFile(nested / "c", "c");
    writeFile(nested / "checksums.sha256", hashOf(HashFormat::SHA256, "c") + "  c\n");
    ASSERT_EQ(program("slatewise-verify", {"--mhl", nested}).exitCode, 0);
    const auto odd = folder / "odd \xff";
    std::filesystem::remove_all(folder / "Disk");
    std::filesystem::create_directory(odd);
    std::filesystem::rename(folder / "A001", folder / "A \xff");
    const auto copied =
        program("slatewise-offload", {"--mhl", "--quiet", "--to", odd, folder / "A \xff"});
    ASSERT_EQ(copied.exitCode, 0) << copied.standardError;
    const auto set = std::filesystem::directory_iterator(odd / "reports")->path();
    for (const auto& way : {odd, set}) {
        const auto result = program("slatewise-verify", {"--quiet", way});
        EXPECT_EQ(result.exitCode, 0) << result.standardOutput << result.standardError;
    }
}

TEST_F(VerifyProgram, NoSessionStandsForAnotherThatIsGone) {
    const auto disk = folder / "Disk";
    const std::pair<std::string, std::string> names[] = {{"Ş", "S\u0327"},
                                                         {"bad \xff", "bad \xfe"}};
    for (const auto& [lost, kept] : names) {
        SCOPED_TRACE(Text::displayable(lost));
        std::filesystem::remove_all(disk);
        std::filesystem::create_directory(disk);
        for (const auto& name : {lost, kept}) {
            writeFile(folder / name / "a.mov", name);
            const auto copied =
                program("slatewise-offload", {"--quiet", "--template", "{Dest}/{CardName}", "--to",
                                              disk, folder / name});
            ASSERT_EQ(copied.exitCode, 0) << copied.standardError;
            if (name == lost)
                std::filesystem::rename(disk / lost, folder / ("away " + name));
        }
        const auto whole = program("slatewise-verify", {"--quiet", disk});
        EXPECT_EQ(whole.exitCode, 1);
        EXPECT_EQ(whole.standardOutput, "missing\t" + Text::displayable(lost) + "/a.mov\n");
        const auto one = program("slatewise-verify", {"--quiet", disk / kept});
        EXPECT_EQ(one.exitCode, 0) << one.standardOutput << one.standardError;
    }
    // Of one name, whoever shot it and wherever that name stands, the copy that is there counts.
    std::filesystem::remove_all(disk);
    std::filesystem::create_directory(disk);
    for (const auto* crew : {"Unit 1", "Unit 2"}) {
        std::filesystem::remove_all(disk / "bad \xff");
        const auto copied = program("slatewise-offload",
                                    {"--quiet", "--crew", crew, "--template",
                                     "{Dest}/{CardName}/{Cam}", "--to", disk, folder / "bad \xff"});
        ASSERT_EQ(copied.exitCode, 0) << copied.standardError;
    }
    const auto again = program("slatewise-verify", {"--quiet", disk});
    EXPECT_EQ(again.exitCode, 0) << again.standardOutput << again.standardError;
}

TEST_F(VerifyProgram, ReportsThatACardBringsAreItsFootage) {
    (void)offload();
    const auto disk = folder / "Disk";
    const auto card = folder / "B002";
    writeFile(card / "clip.mov", "b");
    std::filesystem::rename(disk / "reports", card / "reports");
    writeFile(card / "reports/B002/manifest.json", "{");
    std::filesystem::remove_all(disk);
    std::filesystem::create_directory(disk);
    const auto copied = program("slatewise-offload", {"--quiet", "--template", "{Dest}/{CardName}",
                                                      "--to", disk, card.native() + "=,"});
    ASSERT_EQ(copied.exitCode, 0) << copied.standardError;
    const auto set = std::filesystem::directory_iterator(disk / "reports")->path();
    for (const auto& way : {disk, disk / "B002", set}) {
        const auto result = program("slatewise-verify", {"--quiet", way});
        EXPECT_EQ(result.exitCode, 0) << way << result.standardOutput << result.standardError;
    }
}

TEST_F(VerifyProgram, KnowsANameInWhateverFormEachListerHasIt) {
    writeFile(folder / "A001/Ş/é.dat", "e");
    Generation ofCard;
    ofCard.files = {{"é.dat", 1, {}, {{HashFormat::MD5, hashOf(HashFormat::MD5, "e"), {}, {}}}}};
    (void)History(RootFolder(folder / "A001/Ş")).append(ofCard);
    // The sign for kelvin, which other systems make a K of.
    writeFile(folder / "A001/\u212a.dat", "k");
    const auto root = offload();
    const auto disk = folder / "Disk";
    const auto expectSame = [&](const char* option, const std::filesystem::path& path) {
        const auto result = program("slatewise-verify", {option, path});
        EXPECT_EQ(result.standardOutput, "") << option << path;
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
    };
    const auto nfd = root / "S\u0327";
    expectSame("--mhl", disk / *root.lexically_relative(disk).begin());
    std::filesystem::rename(root / "Ş", nfd);
    std::filesystem::rename(root / "\u212a.dat", root / "K.dat");
    expectSame("--mhl", root);
    std::filesystem::rename(nfd / "é.dat", nfd / "e\u0301.dat");
    std::vector<std::filesystem::path> lists;
    for (const auto& item : std::filesystem::directory_iterator(nfd / "ascmhl"))
        lists.push_back(item.path());
    for (const auto& list : lists) {
        const auto name = Text::replaced(list.filename().native(), "Ş", "S\u0327");
        std::filesystem::rename(list, list.parent_path() / name);
    }
    // By now the reports, an outer history and an inner one have it each in a form of its own.
    for (const auto* const option : {"--quiet", "--mhl", "--quiet"}) {
        expectSame(option, root);
        expectSame(option, disk / *root.lexically_relative(disk).begin());
    }
    writeFile(nfd / "e\u0301.dat", "E");
    EXPECT_EQ(program("slatewise-verify", {"--quiet", root}).standardOutput,
              "changed\tS\u0327/e\u0301.dat\n");
    std::filesystem::remove(nfd / "e\u0301.dat");
    EXPECT_THAT(program("slatewise-verify", {"--quiet", root}).standardOutput,
                HasSubstr("missing\tS\u0327/e\u0301.dat\n"));
}

TEST_F(VerifyProgram, MissesAListOfASetAndNothingInATrash) {
    const auto root = offload("--mhl");
    const auto disk = folder / "Disk";
    std::filesystem::create_directories(disk / ".Trashes/501");
    std::filesystem::copy(root / "ascmhl", disk / ".Trashes/501/ascmhl");
    for (const auto* const trash : {".Trash/1000", ".Trash-1000/files", "$RECYCLE.BIN/S-1-5"}) {
        writeFile(disk / trash / "x.dat", "x");
        std::filesystem::copy(root / "ascmhl", disk / trash / "ascmhl");
    }
    for (const auto* const words : {"--quiet", "--mhl", "--quiet"}) {
        const auto whole = program("slatewise-verify", {words, disk});
        EXPECT_EQ(whole.exitCode, 0) << whole.standardOutput;
    }
    EXPECT_THAT(History::load(RootFolder(disk)).generations().back().ignored,
                ::testing::IsSupersetOf({"/.Trash/", "/.Trash-1000/", "/$RECYCLE.BIN/"}));
    // A file at the top, a folder named almost so, and what lies in a copy, is what it seems.
    for (const auto* const name : {".Trash-/x.dat", ".Trash-1000.dat", ".Trash-12takes/x.dat"})
        writeFile(disk / name, "x");
    EXPECT_EQ(program("slatewise-verify", {"--quiet", disk}).standardOutput,
              "new\t.Trash-/x.dat\nnew\t.Trash-1000.dat\nnew\t.Trash-12takes/x.dat\n");
    writeFile(root / ".Trash-1000/x.dat", "x");
    EXPECT_EQ(program("slatewise-verify", {"--quiet", root}).standardOutput,
              "new\t.Trash-1000/x.dat\n");
    std::filesystem::remove_all(root / ".Trash-1000");
    const auto list = reports / "checksums.sha256";
    std::filesystem::remove(list);
    EXPECT_THAT(program("slatewise-verify", {"--quiet", root}).standardOutput,
                StartsWith("damaged\t" + list.native() + "\n"));
}
