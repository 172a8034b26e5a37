#include "Tools/OffloadProgram.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserDefaults.h"
#include "support/MountedVolume.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

// What the program makes of its words, and what it says and leaves.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST_F(OffloadProgram, TakesEveryCardToEveryDiskAndLeavesItsTraces) {
    const auto result = offload({"--camera", "CamA", "--crew", "Unit 1", "--to", folder / "Disk1",
                                 "--to", folder / "Disk2", folder / "A001", folder / "B002"});
    const auto& pairs = result.pairs;
    ASSERT_THAT(pairs, SizeIs(4));
    for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
        const auto* const card = pair < 2 ? "A001" : "B002";
        const auto* const disk = pair % 2 == 0 ? "Disk1" : "Disk2";
        expectProved(pairs[pair], folder / card);
        EXPECT_THAT(pairs[pair].sessionRoot.native(),
                    AllOf(HasSubstr(folder / disk), HasSubstr("/Unit 1/CamA/"), HasSubstr(card)));
        EXPECT_EQ(pairs[pair].reportFolder.parent_path(), folder / disk / "reports");
        const auto archived =
            folder / "user/documents/SlatewiseDIT" / pairs[pair].reportFolder.filename();
        EXPECT_EQ(readFile(archived / "manifest.json"),
                  readFile(pairs[pair].reportFolder / "manifest.json"));
    }
    // Row by row, as other programs read them.
    const auto agree = run({"python3", "-c", R"python(
import json, sqlite3, sys
store = sqlite3.connect(sys.argv[1])
for folder in sys.argv[2:]:
    manifest = json.load(open(folder + "/manifest.json"))
    rows = store.execute("SELECT relativePath, sizeBytes, action, sourceSHA256, destSHA256, "
                         "verifyStatus FROM files WHERE sessionID = ? ORDER BY id",
                         [manifest["session_id"]]).fetchall()
    files = [(f["relative_path"], f["size_bytes"], f["action"], f.get("source_sha256"),
              f.get("dest_sha256"), f["verify_status"]) for f in manifest["files"]]
    assert rows == files and files, (rows, files)
)python",
                            store(), pairs[0].reportFolder, pairs[3].reportFolder});
    EXPECT_EQ(agree.exitCode, 0) << agree.standardError;
    EXPECT_THAT(result.standardError, HasSubstr("4/4  B002 → Disk2"));
}

TEST_F(OffloadProgram, TheFirstFailureEndsTheBatch) {
    ASSERT_EQ(::mkfifo((folder / "B002/fifo").c_str(), 0600), 0);
    for (const auto* link : {"5", "2", "4", "1", "3"})
        std::filesystem::create_symlink("nowhere", folder / "B002" / link);
    const auto result = offload({"--quiet", "--to", folder / "Disk1", "--to", folder / "Disk2",
                                 folder / "B002", folder / "A001"},
                                1);
    const auto& pairs = result.pairs;
    ASSERT_THAT(pairs, SizeIs(4));
    EXPECT_EQ(pairs[0].status, "failed");
    EXPECT_TRUE(std::filesystem::exists(pairs[0].reportFolder / "manifest.json"))
        << "what failed is reported too";
    EXPECT_TRUE(std::filesystem::is_directory(pairs[0].sessionRoot));
    for (std::size_t pair = 1; pair < pairs.size(); ++pair) {
        EXPECT_EQ(pairs[pair].status, "failed");
        EXPECT_TRUE(pairs[pair].sessionRoot.empty());
    }
    EXPECT_THAT(
        result.standardError,
        AllOf(HasSubstr("1/4  B002 → Disk1 · Failed: Copying stopped at fifo: it is a FIFO"),
              HasSubstr("Keep the card"),
              HasSubstr("not verified: " + pairs[0].sessionRoot.native()),
              HasSubstr("4/4  A001 → Disk2 · Not begun.")));
    const auto told = [&](const std::string& link) {
        return result.standardError.find("The link " + link + " leads nowhere");
    };
    EXPECT_LT(told("1"), told("2"));
    EXPECT_LT(told("2"), told("3"));
    EXPECT_EQ(told("4") & told("5"), std::string::npos);
    EXPECT_THAT(result.standardError, HasSubstr("And 2 more notes"));

    // A limit of the user's own is a failure like others.
    const auto limited = run({"sh", "-c", "ulimit -f 1000; exec \"$0\" \"$@\"", program, "--quiet",
                              "--to", folder / "Disk2", folder / "A001"},
                             environment);
    EXPECT_EQ(limited.exitCode, 1);
    EXPECT_THAT(limited.standardError, HasSubstr("A001 → Disk2 · Failed"));
}

TEST_F(OffloadProgram, WhatNamesHoldActsOnNobody) {
    const auto card = folder / "A\x1b[2J\n\u202eB";
    writeFile(card / std::string(200, 'x') / std::string(200, 'y') / "f\r\u009b1m", "x");
    ASSERT_EQ(::mkfifo((card / "z\tz").c_str(), 0600), 0);
    const auto result = offload({"--to", folder / "Disk1", card}, 1);
    EXPECT_THAT(result.standardOutput, HasSubstr("A␛[2J␊\ufffdB\t"));
    EXPECT_THAT(result.pairs, SizeIs(1));
    EXPECT_THAT(result.standardError, HasSubstr("z␉z"));
    for (const auto line : Text::pieces(result.standardError, '\n')) {
        EXPECT_EQ(Text::visible(line), line);
        EXPECT_LT(line.size(), 700U);
    }
    int pages = 0;
    for (const auto& file :
         std::filesystem::recursive_directory_iterator(folder / "Disk1/reports")) {
        if (file.path().extension() != ".html")
            continue;
        ++pages;
        EXPECT_THAT(readFile(file.path()), AllOf(HasSubstr("z␉z"), Not(HasSubstr("\u202e")),
                                                 Not(HasSubstr("\u009b")), Not(HasSubstr("\x1b"))));
    }
    EXPECT_EQ(pages, 2);
}

TEST_F(OffloadProgram, SaysWhatIsWrongWithItsUsage) {
    const std::string card = folder / "A001";
    const std::string disk = folder / "Disk1";
    writeFile(folder / "used/reports/one/manifest.json", "{}");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "CARD is required"},
        {{card}, "--to is required"},
        {{"--to", disk}, "CARD is required"},
        {{"--to", disk, card, "--unknown"}, "--unknown"},
        {{"--to", disk, "--language", "de", card}, "de not in {en,tr}"},
        {{"--to", disk, folder / "A001/.DS_Store"}, ".DS_Store is not a folder"},
        {{"--to", disk, card, card + "/"}, "A001 is given twice"},
        {{"--to", disk, card, card + "=CamA,Ekip1"}, "A001 is given twice"},
        {{"--to", disk, "--camera"}, "--camera"},
        {{"--to", disk, "--to", card, card}, "A001 is both a card and a destination"},
        {{"--to", disk, "--template", "{Dest}/../x", card}, "leads out of the destination"},
        {{"--to", disk, "--template", "/", card}, "leads out of the destination"},
        {{"--to", disk, folder / "used", card}, "used is given as a card but has report sets"},
        {{"--to", disk, card, "--b\x1b[31m\u202e"}, "--b␛[31m\ufffd"},
        {{"--to", disk, card, "--" + std::string(5'000, 'x')}, "xxx…xxx"},
    };
    for (const auto& [words, complaint] : cases) {
        const auto result = offload(words, 2);
        EXPECT_THAT(result.standardError, HasSubstr(complaint));
        EXPECT_LT(result.standardError.size(), 1'000U);
        EXPECT_THAT(result.standardOutput, IsEmpty());
    }
    EXPECT_FALSE(std::filesystem::exists(store()));
    writeFile(folder / "odd/a", "a");
    std::filesystem::create_symlink("reports", folder / "odd/reports");
    for (const auto& words : std::vector<std::vector<std::string>>{{folder / "Disk2"},
                                                                   {folder / "Disk2=,", card},
                                                                   {folder / "used=CamA,", card},
                                                                   {folder / "odd", card}}) {
        auto all = words;
        all.insert(all.end(), {"--quiet", "--to", disk});
        const auto result = offload(all);
        EXPECT_EQ(result.standardError.find("is empty, so there is nothing to copy") ==
                      std::string::npos,
                  words.size() > 1);
    }
    EXPECT_EQ(
        run({programsFolder() / "slatewise-volumes", "--once", "--root", "/nope"}, environment)
            .exitCode,
        2);
    (void)offload({"--help"});
}

TEST_F(OffloadProgram, HashingLeavesReportsAlone) {
    for (const bool hasDisk : {true, false}) {
        std::vector<std::string> words = {"--hash-only", "--quiet", folder / "A001"};
        if (hasDisk)
            words.insert(words.end(), {"--to", folder / "Disk1"});
        const auto result = offload(words);
        EXPECT_THAT(result.standardError, IsEmpty()) << "quiet";
        const auto& pairs = result.pairs;
        ASSERT_THAT(pairs, SizeIs(1));
        EXPECT_EQ(pairs[0].status, "hashed");
        EXPECT_TRUE(pairs[0].sessionRoot.empty()) << "nobody made one";
        EXPECT_THAT(readFile(pairs[0].reportFolder / "inventory.csv"), HasSubstr(",HASH,hashed,"));
        const auto reports = folder / (hasDisk ? "Disk1/reports" : "user/documents/SlatewiseDIT");
        EXPECT_EQ(pairs[0].reportFolder.parent_path(), reports);
        EXPECT_THAT(entriesOf(folder / "Disk1"), ::testing::ElementsAre("reports"));
        EXPECT_FALSE(std::filesystem::exists(reports / "reports"));
    }

    // One that fails at its first file has not become a copy.
    ASSERT_EQ(::mkfifo((folder / "B002/A").c_str(), 0600), 0);
    const auto result = offload({"--hash-only", "--to", folder / "Disk2", folder / "B002"}, 1);
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("B002: camera not named, crew not named."),
                      HasSubstr("B002 · Failed: Hashing stopped at A: it is a FIFO"),
                      HasSubstr("start again.\n"), Not(HasSubstr("Disk2"))));
    const auto& failed = result.pairs.at(0);
    EXPECT_TRUE(failed.sessionRoot.empty());
    EXPECT_THAT(readFile(failed.reportFolder / "Reports_Standart.html"),
                AllOf(HasSubstr("0 hashed, 0 skipped, 3 failed"), Not(HasSubstr("class=\"sep\""))));
}

TEST_F(OffloadProgram, SaysThatAnEmptyMountPointLiesOnTheSystemsDisk) {
    const auto place = "/mnt/slatewise-" + folder.path().filename().native();
    const auto archive = place + "-archive";
    runPrivileged({"mkdir", "-m", "0777", place, archive});
    const auto result = offload({"--quiet", "--language", "tr", "--to", place, folder / "A001"});
    const std::string sentence = ": buraya disk bağlı değil, kopya sistem diskinde duruyor.";
    EXPECT_THAT(result.standardError, HasSubstr(place + sentence));
    EXPECT_THAT(readFile(result.pairs.at(0).reportFolder / "manifest.json"), HasSubstr(sentence));
    OffloadSettings settings;
    settings.outputFolderPath = archive;
    UserDefaults defaults(folder / "user/config/Slatewise DIT/settings.ini");
    settings.save(defaults);
    defaults.waitUntilWritten();
    const auto refused = offload({"--quiet", "--to", folder / "Disk1", folder / "A001"}, 1);
    EXPECT_THAT(refused.standardError, HasSubstr(archive + " is not mounted."));
    EXPECT_THAT(entriesOf(folder / "Disk1"), IsEmpty());
    runPrivileged({"rm", "-r", place, archive});
}

TEST_F(OffloadProgram, APageThatCannotBeMadeCostsNoList) {
    writeFile(folder / "fonts.conf", "<fontconfig></fontconfig>");
    environment["FONTCONFIG_FILE"] = folder / "fonts.conf";
    const auto result = offload({"--quiet", "--to", folder / "Disk1", folder / "A001"}, 1);
    EXPECT_THAT(result.standardError, HasSubstr("Report pages are missing in Disk1"));
    const auto set = result.pairs.at(0).reportFolder;
    EXPECT_THAT(entriesOf(set),
                UnorderedElementsAre("manifest.json", "inventory.csv", "checksums.sha256",
                                     "Reports_Standart.html", "Reports_Detailed.html"));
    for (const auto* name : {"manifest.json", "Reports_Detailed.html"})
        EXPECT_THAT(readFile(set / name), HasSubstr("Report pages are missing"));
    expectProved({"verified", result.pairs[0].sessionRoot, set}, folder / "A001");
}

TEST_F(OffloadProgram, ACardMayHaveWordsOfItsOwn) {
    writeFile(folder / "C=3,x/a", "a");
    const auto result = offload({"--camera", "CamB", "--to", folder / "Disk1",
                                 folder / "A001=CamA,Ekip1", folder / "B002", folder / "C=3,x"});
    const auto& pairs = result.pairs;
    ASSERT_THAT(pairs, SizeIs(3));
    EXPECT_THAT(pairs[0].sessionRoot.native(), HasSubstr("/Ekip1/CamA/A001"));
    EXPECT_THAT(pairs[1].sessionRoot.native(), HasSubstr("/EKIP/CamB/B002"));
    EXPECT_THAT(pairs[2].sessionRoot.native(), HasSubstr("/EKIP/CamB/C=3,x"));
    EXPECT_THAT(result.standardError, AllOf(HasSubstr("B002: camera CamB, crew not named (EKIP in"),
                                            HasSubstr("A001: camera CamA, crew Ekip1.")));

    const auto other = offload({"--to", folder / "Disk1", folder / "A001=2"}, 1);
    EXPECT_THAT(other.standardError, HasSubstr("A001=2: the file or folder is not there"))
        << "a card that is not there, and not another one";
}

TEST_F(OffloadProgram, FollowsItsOptions) {
    const auto result =
        offload({"--template", "Film/{Project}/{Cam}_{CardName}", "--project", "Kış", "--camera",
                 " C/1 ", "--exclude", "MISC", "--exclude", "other", "--language", "tr", "--to",
                 folder / "Disk1", folder / "B002"});
    const auto& pairs = result.pairs;
    ASSERT_THAT(pairs, SizeIs(1));
    EXPECT_EQ(pairs[0].sessionRoot, folder / "Disk1/Film/Kış/C-1_B002");
    EXPECT_FALSE(std::filesystem::exists(pairs[0].sessionRoot / "MISC"));
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("Doğrulandı — 1 dosya"), HasSubstr("ekip belirtilmedi.")));
    EXPECT_THAT(readFile(pairs[0].reportFolder / "inventory.csv"), HasSubstr("bayt"));
    EXPECT_FALSE(std::filesystem::exists(folder / "user/config/Slatewise DIT/settings.ini"))
        << "options are for one run";
}
