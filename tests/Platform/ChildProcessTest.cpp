#include "Platform/ChildProcess.h"

#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "support/Files.h"
#include "support/Waiting.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace std::chrono_literals;
using ChildProcess::End;
using ::testing::HasSubstr;

namespace {

constexpr ChildProcess::Limits kShort{.run = 400ms, .grace = 200ms};

ChildProcess::Result shell(const std::string& script, const ChildProcess::Limits& limits = {},
                           const std::stop_token& stop = {}) {
    return ChildProcess::run(
        {.executable = "/bin/sh", .arguments = {"-c", script}, .environment = {}}, limits, stop);
}

/// Gives whether the process ends soon. Whoever should collect it may take their time.
bool ends(pid_t process) {
    // The library has the call for C alone.
    const FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (!handle)
        return errno == ESRCH;
    pollfd watched{.fd = handle.get(), .events = POLLIN, .revents = 0};
    return ::poll(&watched, 1, 5000) == 1;
}

} // namespace

TEST(ChildProcess, GivesOutputAndStatus) {
    struct Case {
        const char* script;
        int status;
        std::string output;
    };
    const Case cases[] = {
        {"printf 'a\\0b'", 0, std::string("a\0b", 3)},
        {"echo out; echo err >&2; exit 3", 3, "out\n"},
        {"kill -KILL $$", SIGKILL, ""},
        {"cat; echo end", 0, "end\n"}, // nothing comes on standard input
        {"pwd", 0, "/\n"},
        {"head -c 50000000 /dev/zero >&2; echo end", 0, "end\n"},
    };
    for (const auto& [script, status, output] : cases) {
        const auto result = shell(script);
        EXPECT_EQ(result.end, End::Exited) << script;
        EXPECT_EQ(result.status, status) << script;
        EXPECT_EQ(result.standardOutput, output) << script;
    }
    const auto cut = shell("head -c 1000000 /dev/zero", {.outputBytes = 1000});
    EXPECT_EQ(cut.end, End::Exited);
    EXPECT_EQ(cut.standardOutput, std::string(1000, '\0'));
}

TEST(ChildProcess, InheritsNothingButWhatItIsGiven) {
    const TemporaryFolder folder;
    writeFile(folder / "secret", "x");
    const int inheritable = ::open((folder / "secret").c_str(), O_RDONLY);
    ASSERT_GT(inheritable, 2);
    ::setenv("SLATEWISE_KEPT", "kept", 1);
    ::setenv("SLATEWISE_CHANGED", "old", 1);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);

    const auto result = ChildProcess::run(
        {.executable = "/bin/sh",
         .arguments = {"-c", "ls -l /proc/$$/fd; echo $SLATEWISE_KEPT $SLATEWISE_CHANGED; "
                             "grep SigBlk /proc/self/status; pwd"},
         .workingDirectory = folder.path(),
         .environment = {{"SLATEWISE_CHANGED", "new"}}},
        {});
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    ::close(inheritable);

    EXPECT_THAT(result.standardOutput, ::testing::Not(HasSubstr("secret")));
    EXPECT_THAT(result.standardOutput, HasSubstr("kept new\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("SigBlk:\t0000000000000000\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr(folder.path().native() + "\n"));
}

TEST(ChildProcess, EndsTheWholeGroupOfWhatTakesTooLong) {
    const TemporaryFolder folder;
    const auto note = (folder / "child").native();
    const std::string ignoresTermination = "trap '' TERM; ";
    // The program itself hangs, only a child of it does, or it has closed its outputs.
    for (const auto& script :
         {ignoresTermination + "sleep 60 & echo $! > " + note + "; wait; sleep 60",
          "sleep 60 & echo $! > " + note,
          ignoresTermination + "echo $$ > " + note + "; exec >&- 2>&-; while :; do sleep 1; done",
          "sleep 60 & echo $! > " + note + "; while :; do echo flood; done"}) {
        const auto start = std::chrono::steady_clock::now();
        const auto result = shell(script, kShort);
        const auto taken = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(result.end, End::TimedOut) << script;
        EXPECT_EQ(result.standardOutput, "") << script;
        EXPECT_LT(taken, 5s) << script;
        EXPECT_TRUE(ends(std::stoi(readFile(note)))) << script;
    }
}

TEST(ChildProcess, HasNoMoreMemoryThanItIsGiven) {
    for (const auto& [memory, output] :
         {std::pair(256u << 20, ""), std::pair(2048u << 20, "had\n")}) {
        const auto result = ChildProcess::run(
            {.executable = "/usr/bin/python3",
             // The limit is set once the program runs.
             .arguments = {"-c", "import mmap, resource, time\n"
                                 "while resource.getrlimit(resource.RLIMIT_AS)[0] < 0:\n"
                                 "    time.sleep(0.001)\n"
                                 "mmap.mmap(-1, 512 << 20)\n"
                                 "print('had')"},
             .environment = {}},
            {.memoryBytes = memory});
        EXPECT_EQ(result.end, End::Exited);
        EXPECT_EQ(result.status == 0, *output != '\0');
        EXPECT_EQ(result.standardOutput, output);
    }
}

TEST(ChildProcess, EndsAtOnceWhenAskedToStop) {
    const TemporaryFolder folder;
    std::stop_source stop;
    std::chrono::steady_clock::time_point asked;
    std::jthread asker([&] {
        EXPECT_TRUE(waitForFile(folder / "begun"));
        asked = std::chrono::steady_clock::now();
        stop.request_stop();
    });
    const auto script = "touch '" + (folder / "begun").native() + "'; sleep 60";
    EXPECT_EQ(shell(script, {}, stop.get_token()).end, End::Cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 5s);
}

TEST(ChildProcess, CannotStartWhatIsNoProgram) {
    const TemporaryFolder folder;
    writeFile(folder / "text", "no program");
    EXPECT_THROW(
        ChildProcess::run({.executable = folder / "none", .arguments = {}, .environment = {}}, {}),
        PosixError);
    EXPECT_THROW(
        ChildProcess::run({.executable = folder / "text", .arguments = {}, .environment = {}}, {}),
        PosixError);
    EXPECT_THROW(ChildProcess::run({.executable = "/bin/true",
                                    .arguments = {},
                                    .workingDirectory = folder / "none",
                                    .environment = {}},
                                   {}),
                 PosixError);
}
