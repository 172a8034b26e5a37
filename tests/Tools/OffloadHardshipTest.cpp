#include "Tools/OffloadProgram.h"

#include "Storage/AppDatabase.h"
#include "support/MountedVolume.h"
#include "support/RecordingServer.h"
#include "support/Waiting.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

// What the program does when it is interrupted, killed, or kept waiting by what it works with.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

/// Until one of its threads waits for a file system that does not answer. Nobody tells of that but
/// the kernel, when asked.
bool waitUntilBlocked(pid_t process) {
    return waitUntil([threads = "/proc/" + std::to_string(process) + "/task"] {
        std::error_code ended;
        for (const auto& thread : std::filesystem::directory_iterator(threads, ended)) {
            std::string place;
            std::ifstream(thread.path() / "wchan") >> place;
            // The second while the file system's program has not even greeted the kernel.
            if (place == "request_wait_answer" || place == "fuse_get_req")
                return true;
        }
        return false;
    });
}

} // namespace

TEST_F(OffloadProgram, AnInterruptStopsCleanlyAndSaysWhatStays) {
    addLongClip("long.mov");
    const auto copy = folder / "Disk1/session/DCIM/long.mov";
    // As for a program that is to outlive its terminal.
    std::signal(SIGHUP, SIG_IGN);
    const auto result = offload({"--template", "session", "--to", folder / "Disk1", "--to",
                                 folder / "Disk2", folder / "A001"},
                                130, [&](pid_t process) {
                                    EXPECT_TRUE(waitForFile(copy));
                                    ::kill(process, SIGHUP);
                                    // As people ask some programs how far they are.
                                    ::kill(process, SIGUSR1);
                                    ::kill(process, SIGINT);
                                });
    std::signal(SIGHUP, SIG_DFL);
    EXPECT_THAT(result.standardError,
                AllOf(HasSubstr("Cancelled."), HasSubstr(folder / "Disk1/session"),
                      Not(HasSubstr("Verification did not finish"))));
    const auto& pairs = result.pairs;
    ASSERT_THAT(pairs, SizeIs(2));
    EXPECT_EQ(pairs[0].status, "failed");
    EXPECT_LT(std::filesystem::file_size(copy), kLongClip);
    EXPECT_THAT(readFile(pairs[0].reportFolder / "inventory.csv"),
                AllOf(HasSubstr("clip 1.dat"), HasSubstr("COPY,copied_unverified"),
                      HasSubstr("FAIL,failed")));
    EXPECT_EQ(readFile(pairs[0].reportFolder / "checksums.sha256"), "");
}

TEST_F(OffloadProgram, AKilledRunIsNeverContinuedOrOverwritten) {
    addLongClip("long.mov");
    const std::vector<std::string> words = {"--quiet", "--template",     "session",
                                            "--to",    folder / "Disk1", folder / "A001"};
    const auto copy = folder / "Disk1/session/DCIM/long.mov";
    const auto killed = offload(words, 128 + SIGKILL, [&](pid_t process) {
        EXPECT_TRUE(waitForFile(copy, [&] {
            return std::filesystem::exists(copy) && std::filesystem::file_size(copy) > 0;
        }));
        ::kill(process, SIGKILL);
    });
    EXPECT_EQ(killed.standardOutput, "");
    const auto left = std::filesystem::file_size(copy);

    std::filesystem::remove(folder / "A001/DCIM/long.mov");
    const auto next = offload(words).pairs.at(0);
    EXPECT_EQ(next.sessionRoot, folder / "Disk1/session_2");
    expectProved(next, folder / "A001");
    EXPECT_EQ(std::filesystem::file_size(copy), left);
}

TEST_F(OffloadProgram, AFileThatEndsBeforeItsTimeIsNotHashed) {
    environment["LD_PRELOAD"] = programsFolder() / "slatewise-fault-shim.so";
    environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    environment["SLATEWISE_FAULT"] = "read 2 -1 " + (folder / "A001/DCIM").native();
    const auto result = offload({"--quiet", "--hash-only", folder / "A001"}, 1);
    EXPECT_THAT(result.standardError, HasSubstr("ended after 1048576 of 3000001 bytes"));
}

TEST_F(OffloadProgram, AnswersForEveryCardAndDiskThatIsGoneDeadOrSilent) {
    const MountedVolume dead(MountedVolume::FileSystem::ExFat, 8 << 20, "");
    const MountedVolume silent(MountedVolume::FileSystem::ExFat, 8 << 20, "");
    dead.signalItsProgram(SIGKILL);
    silent.signalItsProgram(SIGSTOP);
    const auto result = offload({"--to", folder / "Disk1", "--to", folder / "gone", folder / "A001",
                                 folder / "no", dead.path(), silent.path(), folder / "B002"},
                                1);
    const auto& pairs = result.pairs;
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
    const auto interrupted =
        offload({"--to", folder / "Disk1", silent.path()}, 130, [](pid_t process) {
            EXPECT_TRUE(waitUntilBlocked(process));
            ::kill(process, SIGINT);
        });
    EXPECT_THAT(interrupted.standardError, HasSubstr("Stopping…"));
    EXPECT_EQ(interrupted.standardOutput, "failed\t\t\n");
    silent.signalItsProgram(SIGCONT);
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
        expectProved(result.pairs.at(0), folder / "A001");
    }
    EXPECT_EQ(ask("SELECT count(*) FROM sessions"), "0\n");

    ask("DROP TRIGGER full; CREATE TRIGGER full BEFORE INSERT ON outbox BEGIN SELECT RAISE(ABORT, "
        "'x'); END;");
    (void)offload({"--quiet", "--to", folder / "Disk1", folder / "A001"});
    EXPECT_EQ(ask("SELECT count(*) FROM sessions"), "1\n")
        << "the report costs the session nothing";

    // Who interrupts while another program holds it is told what is lost all the same.
    SQLite::Database holder(store().native(), SQLite::OPEN_READWRITE);
    holder.exec("BEGIN EXCLUSIVE");
    const auto isToBeStored = [&] {
        return logOfUserIn(folder / "user").find("Offload verified card=A001 dest=Disk2") !=
               std::string::npos;
    };
    // Whether that ends a run which was all but over is a matter of luck.
    const auto result =
        offload({"--quiet", "--to", folder / "Disk2", folder / "A001"}, {}, [&](pid_t process) {
            EXPECT_TRUE(waitForFile(folder / "user/state/Logs/Slatewise DIT", isToBeStored));
            ::kill(process, SIGINT);
        });
    EXPECT_THAT(result.standardError, HasSubstr("The history could not be written"));
}

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
        EXPECT_THAT(result.pairs, SizeIs(2));
        EXPECT_THAT(result.standardError, HasSubstr("The service has not taken every report"));
        EXPECT_THAT(AppDatabase(store()).pendingOutboxIDs(), SizeIs(waiting += 2));
    }
}

TEST_F(OffloadProgram, ShowsSpeedAndTimeLeftWholeInANarrowTerminal) {
    addLongClip(std::string(100, 'x') + ".mov");
    const auto result = run({"python3", "-c", R"python(
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
                             program, "--to", folder / "Disk1", folder / "A001"},
                            environment);
    EXPECT_THAT(
        result.standardOutput,
        ::testing::MatchesRegex("7[0-9] \\[.* [0-9]+:[0-9][0-9] left · [0-9.]+ [KMG]B/s · .*\n"))
        << result.standardError;
}
