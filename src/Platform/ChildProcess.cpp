#include "Platform/ChildProcess.h"

#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <thread>

namespace slatewise::ChildProcess {

namespace {

using SteadyClock = std::chrono::steady_clock;
using Deadline = SteadyClock::time_point;
using std::chrono::milliseconds;

/// How long a request to stop may go unnoticed.
constexpr milliseconds kLongestPause{100};

/// A pipe whose ends no other child inherits, and whose numbers stay clear of the standard
/// streams', even in a process that was started without these.
struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw PosixError("pipe", {}, errno);
        reader = FileDescriptor(ends[0]);
        writer = FileDescriptor(ends[1]);
        reader = aboveStandardStreams(std::move(reader));
        writer = aboveStandardStreams(std::move(writer));
    }

    static FileDescriptor aboveStandardStreams(FileDescriptor end) {
        if (end.get() > STDERR_FILENO)
            return end;
        FileDescriptor moved(::fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (!moved)
            throw PosixError("fcntl", {}, errno);
        return moved;
    }

    FileDescriptor reader;
    FileDescriptor writer;
};

/// What happens between the start of the child and that of its program.
class FileActions {
public:
    FileActions(const Command& command, const Pipe& output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, output.writer.get(), STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        // A library may have opened something that is inheritable.
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        ::posix_spawn_file_actions_addchdir_np(&actions_, command.workingDirectory.c_str());
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// A process group of its own, and signals as a fresh program expects them.
class Attributes {
public:
    Attributes() {
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        sigset_t signals;
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF |
                                                     POSIX_SPAWN_SETSIGMASK);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

std::vector<std::string> environmentFor(const Command& command) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view text = *entry;
        if (!command.environment.contains(std::string(text.substr(0, text.find('=')))))
            entries.emplace_back(text);
    }
    for (const auto& [name, value] : command.environment)
        entries.push_back(std::string(name).append("=").append(value));
    return entries;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

pid_t start(const Command& command, const Pipe& output) {
    std::vector<std::string> words = {command.executable.native()};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    auto environment = environmentFor(command);
    pid_t process = 0;
    const int failure =
        ::posix_spawn(&process, command.executable.c_str(), FileActions(command, output).get(),
                      Attributes().get(), pointers(words).data(), pointers(environment).data());
    if (failure != 0)
        throw PosixError("run", command.executable, failure);
    return process;
}

/// A clip of a few kilobytes can make a reader of clips ask for all the memory of the machine.
void limitMemory(pid_t process, std::uint64_t bytes) {
    const rlimit limit{.rlim_cur = bytes, .rlim_max = bytes};
    // One that has ended already needs none.
    if (::prlimit(process, RLIMIT_AS, &limit, nullptr) != 0 && errno != ESRCH)
        throw PosixError("prlimit", {}, errno);
}

/// Our child. Ended and collected at the end of its life at the latest. It is collected only after
/// its group was ended: until then the group's number cannot go to anyone else.
class Child {
public:
    Child(const Command& command, const Pipe& output) : process_(start(command, output)) {}
    ~Child() {
        if (isCollected_)
            return;
        signalGroup(SIGKILL);
        constexpr milliseconds kUsuallyEnough{1'000};
        if (collect(SteadyClock::now() + kUsuallyEnough, {}))
            return;
        // Even a killed process stays for as long as the kernel waits for a broken disk.
        std::thread([process = process_] { ::waitpid(process, nullptr, 0); }).detach();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Waits for its end. False when the time is over before.
    bool collect(Deadline deadline, const std::stop_token& stop) {
        milliseconds pause{1};
        for (;;) {
            const pid_t collected = ::waitpid(process_, &status_, WNOHANG);
            isCollected_ = collected == process_ || (collected < 0 && errno == ECHILD);
            if (isCollected_)
                return true;
            if (stop.stop_requested() || SteadyClock::now() >= deadline)
                return false;
            std::this_thread::sleep_for(pause);
            pause = std::min(pause * 2, milliseconds(20));
        }
    }

    void limitMemoryTo(std::uint64_t bytes) const { limitMemory(process_, bytes); }

    void signalGroup(int signal) const { ::kill(-process_, signal); }

    int status() const { return WIFSIGNALED(status_) ? WTERMSIG(status_) : WEXITSTATUS(status_); }

private:
    pid_t process_;
    int status_ = 0;
    bool isCollected_ = false;
};

/// Reads what the child says, as it comes, so that the child never waits for us.
class Output {
public:
    Output(FileDescriptor end, std::size_t limit) : end_(std::move(end)), limit_(limit) {}

    /// Reads until it is at its end. False when the time is over before.
    bool drain(Deadline deadline, const std::stop_token& stop) {
        while (end_) {
            const auto left =
                std::chrono::duration_cast<milliseconds>(deadline - SteadyClock::now());
            if (left <= milliseconds(0) || stop.stop_requested())
                return false;
            pollfd waiting{end_.get(), POLLIN, 0};
            ::poll(&waiting, 1, static_cast<int>(std::min(left, kLongestPause).count()));
            if (waiting.revents != 0)
                readOnce();
        }
        return true;
    }

    std::string take() { return std::move(text_); }

private:
    void readOnce() {
        const auto count = ::read(end_.get(), buffer_.data(), buffer_.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (count < 0)
            text_.clear();
        if (count <= 0)
            end_ = FileDescriptor();
        else
            text_.append(buffer_.data(),
                         std::min(static_cast<std::size_t>(count), limit_ - text_.size()));
    }

    FileDescriptor end_;
    const std::size_t limit_;
    std::string text_;
    std::array<char, 65536> buffer_{};
};

} // namespace

Result run(const Command& command, const Limits& limits, const std::stop_token& stop) {
    Pipe pipe;
    const auto deadline = SteadyClock::now() + limits.run;
    Child child(command, pipe);
    child.limitMemoryTo(limits.memoryBytes);
    // Our copy of the writing end would keep the pipe open for ever.
    pipe.writer = FileDescriptor();

    Output output(std::move(pipe.reader), limits.outputBytes);
    if (output.drain(deadline, stop) && child.collect(deadline, stop))
        return {End::Exited, child.status(), output.take()};

    child.signalGroup(SIGTERM);
    output.drain(SteadyClock::now() + limits.grace, {});
    return {stop.stop_requested() ? End::Cancelled : End::TimedOut, 0, {}};
}

} // namespace slatewise::ChildProcess
