#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"
#include "Storage/AppDatabase.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Process.h"
#include "support/RecordingServer.h"
#include "support/Waiting.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <sys/stat.h>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

struct Line {
    std::string status;
    std::filesystem::path sessionRoot;
    std::filesystem::path reportFolder;
};

/// Until one of its threads waits for a file system that does not answer.
void waitUntilBlocked(pid_t process) {
    const auto threads = "/proc/" + std::to_string(process) + "/task";
    for (; ::kill(process, 0) == 0; std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
        std::error_code ended;
        for (const auto& thread : std::filesystem::directory_iterator(threads, ended)) {
            std::string place;
            std::ifstream(thread.path() / "wchan") >> place;
            // The second while the file system's program has not even greeted the kernel.
            if (place == "request_wait_answer" || place == "fuse_get_req")
                return;
        }
    }
}

/// The program with two cards, two disks and a user of its own.
class OffloadProgram : public ::testing::Test {
protected:
    OffloadProgram() {
        for (const auto* name : {"A001", "B002", "Disk1", "Disk2"})
            std::filesystem::create_directory(folder / name);
        writeFile(folder / "A001/DCIM/clip 1.mov", bytesOf(3'000'001));
        writeFile(folder / "A001/.DS_Store", "junk");
        writeFile(folder / "A001/bad \xff name", "x");
        writeFile(folder / "B002/new\nline.wav", "y");
        writeFile(folder / "B002/MISC/notes.txt", "z");
    }

    ProcessResult offload(const std::vector<std::string>& words,
                          const std::function<void(pid_t)>& whileRunning = {}) {
        std::vector<std::string> command = {(programsFolder() / "slatewise-offload").native()};
        command.insert(command.end(), words.begin(), words.end());
        return run(command, userIn(folder / "user"), whileRunning);
    }

    static std::vector<std::string> entriesOf(const std::filesystem::path& where) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(where))
            names.push_back(entry.path().filename());
        return names;
    }

    static std::vector<Line> lines(const ProcessResult& result) {
        std::vector<Line> parsed;
        for (const auto text : Text::pieces(result.standardOutput, '\n')) {
            const auto first = text.find('\t');
            const auto second = text.find('\t', first + 1);
            parsed.push_back({std::string(text.substr(0, first)),
                              text.substr(first + 1, second - first - 1), text.substr(second + 1)});
        }
        return parsed;
    }

    /// Whether sha256sum and cmp agree with a line that says "verified".
    static void expectProved(const Line& line, const std::filesystem::path& card) {
        EXPECT_EQ(line.status, "verified");
        const auto check = run({"sh", "-c", "cd \"$0\" && sha256sum --strict --quiet -c \"$1\"",
                                line.sessionRoot, line.reportFolder / "checksums.sha256"});
        EXPECT_EQ(check.exitCode, 0) << check.standardOutput << check.standardError;
        const auto compare = run({"diff", "-r", "--exclude=.DS_Store", card, line.sessionRoot});
        EXPECT_EQ(compare.exitCode, 0) << compare.standardOutput;
    }

    std::filesystem::path store() const { return folder / "user/data/Slatewise DIT/dit.sqlite"; }

    TemporaryFolder folder;
};

} // namespace

TEST_F(OffloadProgram, IsNotHeldUpByAServiceThatNeverAnswersAndSaysWhatWaits) {
    const DeafServer deaf;
    const RecordingServer refusing([](const auto&, std::size_t) { return WireAnswer::of(500); });
    const auto profile = store().parent_path() / "service-profile.json";
    std::size_t waiting = 0;
    for (const auto& url : {deaf.url(), refusing.url()}) {
        writeFile(profile, R"({"accountID":"a","presenceToken":"t","saasAPIURL":")" + url + "\"}");
        std::filesystem::permissions(profile, std::filesystem::perms(0600));
        const auto before = std::chrono::steady_clock::now();
        const auto result =
            offload({"--to", folder / "Disk1", "--to", folder / "Disk2", folder / "A001"});
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(25));
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_THAT(lines(result), SizeIs(2));
        EXPECT_THAT(result.standardError, HasSubstr("The service has not taken every report"));
        EXPECT_THAT(AppDatabase(store()).pendingOutboxIDs(), SizeIs(waiting += 2));
    }
}

TEST_F(OffloadProgram, TakesEveryCardToEveryDiskAndLeavesItsTraces) {
    const auto result = offload({"--camera", "CamA", "--crew", "Unit 1", "--to", folder / "Disk1",
                                 "--to", folder / "Disk2", folder / "A001", folder / "B002"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const auto pairs = lines(result);
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
                                 folder / "B002", folder / "A001"});
    EXPECT_EQ(result.exitCode, 1);
    const auto pairs = lines(result);
    ASSERT_THAT(pairs, SizeIs(4));
    EXPECT_EQ(pairs[0].status, "failed");
    EXPECT_TRUE(std::filesystem::exists(pairs[0].reportFolder / "manifest.json"))
        << "what failed is reported too";
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
    const auto limited = run({"sh", "-c", "ulimit -f 1000; exec \"$0\" \"$@\"",
                              programsFolder() / "slatewise-offload", "--quiet", "--to",
                              folder / "Disk2", folder / "A001"},
                             userIn(folder / "user"));
    EXPECT_EQ(limited.exitCode, 1);
    EXPECT_THAT(limited.standardError, HasSubstr("A001 → Disk2 · Failed"));
}

TEST_F(OffloadProgram, AnswersForEveryCardAndDiskThatIsGoneDeadOrSilent) {
    const MountedVolume dead(MountedVolume::FileSystem::ExFat, 8 << 20, "");
    const MountedVolume silent(MountedVolume::FileSystem::ExFat, 8 << 20, "");
    dead.signalItsProgram(SIGKILL);
    silent.signalItsProgram(SIGSTOP);
    const auto result = offload({"--to", folder / "Disk1", "--to", folder / "gone", folder / "A001",
                                 folder / "no", dead.path(), silent.path(), folder / "B002"});
    EXPECT_EQ(result.exitCode, 1);
    const auto pairs = lines(result);
    ASSERT_THAT(pairs, SizeIs(10));
    expectProved(pairs[0], folder / "A001");
    expectProved(pairs[8], folder / "B002");
    for (const auto pair : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 9U})
        EXPECT_EQ(pairs[pair].status, "failed") << pair;
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("A001 → gone · Failed: " + (folder / "gone").native()),
                      HasSubstr("A001 → gone · Keep the card"), HasSubstr("no → Disk1 · Failed"),
                      HasSubstr("the device is gone"),
                      HasSubstr(dead.path().filename().native() + " → Disk1 · Connect it again"),
                      HasSubstr(silent.path().filename().native() + " → Disk1 · Connect it again"),
                      HasSubstr(silent.path().native() + " does not answer")));

    // No other program aborts there either.
    const auto place = dead.path().native();
    const std::vector<std::vector<std::string>> others = {
        {"slatewise-verify", place}, {"slatewise-volumes", "--once", "--root", place}};
    for (auto words : others) {
        words.front() = programsFolder() / words.front();
        EXPECT_LE(run(words).exitCode, 2) << words.front();
    }

    // Nor does the first Ctrl-C wait for it.
    const auto interrupted = offload({"--to", folder / "Disk1", silent.path()}, [](pid_t process) {
        waitUntilBlocked(process);
        ::kill(process, SIGINT);
    });
    EXPECT_EQ(interrupted.exitCode, 130);
    EXPECT_THAT(interrupted.standardError, HasSubstr("Stopping…"));
    EXPECT_EQ(interrupted.standardOutput, "failed\t\t\n");
    silent.signalItsProgram(SIGCONT);
}

TEST_F(OffloadProgram, WhatNamesHoldActsOnNobody) {
    const auto card = folder / "A\x1b[2J\n\u202eB";
    writeFile(card / std::string(200, 'x') / std::string(200, 'y') / "f\r\u009b1m", "x");
    ASSERT_EQ(::mkfifo((card / "z\tz").c_str(), 0600), 0);
    const auto result = offload({"--to", folder / "Disk1", card});
    EXPECT_THAT(result.standardOutput, HasSubstr("A␛[2J␊\ufffdB\t"));
    EXPECT_THAT(lines(result), SizeIs(1));
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
        const auto result = offload(words);
        EXPECT_EQ(result.exitCode, 2) << complaint;
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
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_EQ(result.standardError.find("is empty, so there is nothing to copy") ==
                      std::string::npos,
                  words.size() > 1);
    }
    EXPECT_EQ(run({programsFolder() / "slatewise-volumes", "--once", "--root", "/nope"},
                  userIn(folder / "user"))
                  .exitCode,
              2);
    EXPECT_EQ(offload({"--help"}).exitCode, 0);
}

TEST_F(OffloadProgram, HashingLeavesReportsAlone) {
    for (const bool hasDisk : {true, false}) {
        std::vector<std::string> words = {"--hash-only", "--quiet", folder / "A001"};
        if (hasDisk)
            words.insert(words.end(), {"--to", folder / "Disk1"});
        const auto result = offload(words);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.standardError, IsEmpty()) << "quiet";
        const auto pairs = lines(result);
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
    const auto result = offload({"--hash-only", "--to", folder / "Disk2", folder / "B002"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("B002: camera not named, crew not named."),
                      HasSubstr("B002 · Failed: Hashing stopped at A: it is a FIFO"),

                      HasSubstr("start again.\n"), Not(HasSubstr("Disk2"))));
    const auto failed = lines(result).at(0);
    EXPECT_TRUE(failed.sessionRoot.empty());
    EXPECT_THAT(readFile(failed.reportFolder / "Reports_Standart.html"),
                AllOf(HasSubstr("0 hashed, 0 skipped, 3 failed"), Not(HasSubstr("class=\"sep\""))));
}

TEST_F(OffloadProgram, SaysThatAnEmptyMountPointLiesOnTheSystemsDisk) {
    const auto place = "/mnt/slatewise-" + folder.path().filename().native();
    const auto archive = place + "-archive";
    runPrivileged({"mkdir", "-m", "0777", place, archive});
    const auto result = offload({"--quiet", "--language", "tr", "--to", place, folder / "A001"});
    EXPECT_EQ(result.exitCode, 0);
    const std::string sentence = ": buraya disk bağlı değil, kopya sistem diskinde duruyor.";
    EXPECT_THAT(result.standardError, HasSubstr(place + sentence));
    EXPECT_THAT(readFile(lines(result).at(0).reportFolder / "manifest.json"), HasSubstr(sentence));
    OffloadSettings settings;
    settings.outputFolderPath = archive;
    UserDefaults defaults(folder / "user/config/Slatewise DIT/settings.ini");
    settings.save(defaults);
    defaults.waitUntilWritten();
    const auto refused = offload({"--quiet", "--to", folder / "Disk1", folder / "A001"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.standardError, HasSubstr(archive + " is not mounted."));
    EXPECT_THAT(entriesOf(folder / "Disk1"), IsEmpty());
    runPrivileged({"rm", "-r", place, archive});
}

TEST_F(OffloadProgram, APageThatCannotBeMadeCostsNoList) {
    writeFile(folder / "fonts.conf", "<fontconfig></fontconfig>");
    auto environment = userIn(folder / "user");
    environment["FONTCONFIG_FILE"] = folder / "fonts.conf";
    const auto result = run({programsFolder() / "slatewise-offload", "--quiet", "--to",
                             folder / "Disk1", folder / "A001"},
                            environment);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("Report pages are missing in Disk1"));
    const auto set = lines(result).at(0).reportFolder;
    EXPECT_THAT(entriesOf(set),
                UnorderedElementsAre("manifest.json", "inventory.csv", "checksums.sha256",
                                     "Reports_Standart.html", "Reports_Detailed.html"));
    for (const auto* name : {"manifest.json", "Reports_Detailed.html"})
        EXPECT_THAT(readFile(set / name), HasSubstr("Report pages are missing"));
    expectProved({"verified", lines(result)[0].sessionRoot, set}, folder / "A001");
}

TEST_F(OffloadProgram, ACardMayHaveWordsOfItsOwn) {
    writeFile(folder / "C=3,x/a", "a");
    const auto result = offload({"--camera", "CamB", "--to", folder / "Disk1",
                                 folder / "A001=CamA,Ekip1", folder / "B002", folder / "C=3,x"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const auto pairs = lines(result);
    ASSERT_THAT(pairs, SizeIs(3));
    EXPECT_THAT(pairs[0].sessionRoot.native(), HasSubstr("/Ekip1/CamA/A001"));
    EXPECT_THAT(pairs[1].sessionRoot.native(), HasSubstr("/EKIP/CamB/B002"));
    EXPECT_THAT(pairs[2].sessionRoot.native(), HasSubstr("/EKIP/CamB/C=3,x"));
    EXPECT_THAT(result.standardError, AllOf(HasSubstr("B002: camera CamB, crew not named (EKIP in"),
                                            HasSubstr("A001: camera CamA, crew Ekip1.")));

    const auto other = offload({"--to", folder / "Disk1", folder / "A001=2"});
    EXPECT_EQ(other.exitCode, 1) << "a card that is not there, and not another one";
    EXPECT_THAT(other.standardError, HasSubstr("A001=2: the file or folder is not there"));
}

TEST_F(OffloadProgram, FollowsItsOptions) {
    const auto result =
        offload({"--template", "Film/{Project}/{Cam}_{CardName}", "--project", "Kış", "--camera",
                 " C/1 ", "--exclude", "MISC", "--exclude", "other", "--language", "tr", "--to",
                 folder / "Disk1", folder / "B002"});
    EXPECT_EQ(result.exitCode, 0);
    const auto pairs = lines(result);
    ASSERT_THAT(pairs, SizeIs(1));
    EXPECT_EQ(pairs[0].sessionRoot, folder / "Disk1/Film/Kış/C-1_B002");
    EXPECT_FALSE(std::filesystem::exists(pairs[0].sessionRoot / "MISC"));
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("Doğrulandı — 1 dosya"), HasSubstr("ekip belirtilmedi.")));
    EXPECT_THAT(readFile(pairs[0].reportFolder / "inventory.csv"), HasSubstr("bayt"));
    EXPECT_FALSE(std::filesystem::exists(folder / "user/config/Slatewise DIT/settings.ini"))
        << "options are for one run";
}

TEST_F(OffloadProgram, AStoreThatCannotBeOpenedOrTakesNothingCostsTheHistoryAlone) {
    const auto ask = [this](const char* question) {
        return run({"sqlite3", store().native(), question}).standardOutput;
    };
    const std::function<void()> faults[] = {
        [&] { std::filesystem::create_directories(store()); },
        [&] {
            std::filesystem::remove(store());
            ask("CREATE TABLE sessions (something TEXT)");
        },
        [&] {
            std::filesystem::remove(store());
            (void)AppDatabase(store());
            ask("CREATE TRIGGER full BEFORE INSERT ON sessions BEGIN SELECT RAISE(ABORT, 'x'); "
                "END;");
        },
    };
    for (const auto& fault : faults) {
        fault();
        const auto result = offload({"--quiet", "--to", folder / "Disk1", folder / "A001"});
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        expectProved(lines(result).at(0), folder / "A001");
    }
    EXPECT_EQ(ask("SELECT count(*) FROM sessions"), "0\n");

    // Who interrupts while another program holds it is told what is lost all the same.
    SQLite::Database holder(store().native(), SQLite::OPEN_READWRITE);
    holder.exec("BEGIN EXCLUSIVE");
    const auto isToBeStored = [&] {
        return logOfUserIn(folder / "user").find("Offload verified card=A001 dest=Disk2") !=
               std::string::npos;
    };
    const auto result =
        offload({"--quiet", "--to", folder / "Disk2", folder / "A001"}, [&](pid_t process) {
            EXPECT_TRUE(waitForFile(folder / "user/state/Logs/Slatewise DIT", isToBeStored));
            ::kill(process, SIGINT);
        });
    EXPECT_THAT(result.standardError, HasSubstr("The history could not be written"));
}

TEST_F(OffloadProgram, AnInterruptStopsCleanlyAndSaysWhatStays) {
    writeFile(folder / "A001/DCIM/long.mov", "");
    std::filesystem::resize_file(folder / "A001/DCIM/long.mov", 20'000'000'000);
    const auto copy = folder / "Disk1/session/DCIM/long.mov";
    const auto result = offload({"--template", "session", "--to", folder / "Disk1", "--to",
                                 folder / "Disk2", folder / "A001"},
                                [&](pid_t process) {
                                    EXPECT_TRUE(waitForFile(copy));
                                    ::kill(process, SIGINT);
                                });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("Cancelled."), HasSubstr(folder / "Disk1/session"),
                      Not(HasSubstr("Verification did not finish"))));
    const auto pairs = lines(result);
    ASSERT_THAT(pairs, SizeIs(2));
    EXPECT_EQ(pairs[0].status, "failed");
    EXPECT_LT(std::filesystem::file_size(copy), 20'000'000'000u);
    EXPECT_THAT(readFile(pairs[0].reportFolder / "inventory.csv"),
                AllOf(HasSubstr("clip 1.mov"), HasSubstr("COPY,copied_unverified"),
                      HasSubstr("FAIL,failed")));
    EXPECT_EQ(readFile(pairs[0].reportFolder / "checksums.sha256"), "");
}

TEST_F(OffloadProgram, ShowsSpeedAndTimeLeftWholeInANarrowTerminal) {
    const auto clip = folder / "A001/DCIM" / (std::string(100, 'x') + ".mov");
    writeFile(clip, "");
    std::filesystem::resize_file(clip, 20'000'000'000);
    const auto result =
        run({"python3", "-c", R"python(
import fcntl, os, pty, re, signal, struct, sys, termios
process, terminal = pty.fork()
if process == 0:
    fcntl.ioctl(2, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
    os.execv(sys.argv[1], sys.argv[1:])
shown, bars = "", []
try:
    while piece := os.read(terminal, 65536).decode(errors="replace"):
        shown += piece
        bars = re.findall(r"\x1b\[\?7l(\[.*?)\x1b\[\?7h", shown)
        if bars and " left" in bars[-1]:
            os.kill(process, signal.SIGINT)
except OSError:
    pass
print(max(map(len, bars)), *[bar for bar in bars if " left" in bar][:1])
)python",
             programsFolder() / "slatewise-offload", "--to", folder / "Disk1", folder / "A001"},
            userIn(folder / "user"));
    EXPECT_THAT(
        result.standardOutput,
        ::testing::MatchesRegex("7[0-9] \\[.* [0-9]+:[0-9][0-9] left · [0-9.]+ [KMG]B/s · .*\n"))
        << result.standardError;
}

TEST_F(OffloadProgram, AKilledRunIsNeverContinuedOrOverwritten) {
    writeFile(folder / "A001/DCIM/long.mov", "");
    std::filesystem::resize_file(folder / "A001/DCIM/long.mov", 20'000'000'000);
    const std::vector<std::string> words = {"--quiet", "--template",     "session",
                                            "--to",    folder / "Disk1", folder / "A001"};
    const auto copy = folder / "Disk1/session/DCIM/long.mov";
    const auto killed = offload(words, [&](pid_t process) {
        EXPECT_TRUE(waitForFile(copy, [&] {
            return std::filesystem::exists(copy) && std::filesystem::file_size(copy) > 0;
        }));
        ::kill(process, SIGKILL);
    });
    EXPECT_EQ(killed.exitCode, 128 + SIGKILL);
    EXPECT_EQ(killed.standardOutput, "");
    const auto left = std::filesystem::file_size(copy);

    std::filesystem::remove(folder / "A001/DCIM/long.mov");
    const auto next = offload(words);
    EXPECT_EQ(next.exitCode, 0) << next.standardError;
    const auto pairs = lines(next);
    EXPECT_EQ(pairs.at(0).sessionRoot, folder / "Disk1/session_2");
    expectProved(pairs.at(0), folder / "A001");
    EXPECT_EQ(std::filesystem::file_size(copy), left);
}
