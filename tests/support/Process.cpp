#include "support/Process.h"

#include "support/Files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace slatewise::test {

namespace {

struct Pipe {
    Pipe() {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
    }
    std::array<int, 2> ends;
};

std::string drain(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer;
    for (ssize_t count; (count = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    ::close(descriptor);
    return text;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> fullEnvironment(const Environment& extra) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (!extra.contains(text.substr(0, text.find('='))))
            entries.push_back(text);
    }
    for (const auto& [name, value] : extra)
        entries.push_back(name + "=" + value);
    return entries;
}

} // namespace

Environment userIn(const std::filesystem::path& folder) {
    return {{"XDG_DATA_HOME", folder / "data"},
            {"XDG_STATE_HOME", folder / "state"},
            {"XDG_CONFIG_HOME", folder / "config"},
            {"XDG_DOCUMENTS_DIR", folder / "documents"},
            {"LC_ALL", "C.UTF-8"}};
}

void becomeUserIn(const std::filesystem::path& folder) {
    for (const auto& [name, value] : userIn(folder))
        ::setenv(name.c_str(), value.c_str(), 1);
}

std::string logOfUserIn(const std::filesystem::path& folder) {
    std::string text;
    std::error_code none;
    for (const auto& file :
         std::filesystem::directory_iterator(folder / "state/Logs/Slatewise DIT", none))
        text += readFile(file.path());
    return text;
}

ProcessResult run(const std::vector<std::string>& words, const Environment& extra,
                  const std::function<void(pid_t)>& whileRunning) {
    Pipe output;
    Pipe error;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, error.ends[1], STDERR_FILENO);
    auto arguments = words;
    auto environment = fullEnvironment(extra);
    pid_t process = 0;
    const int failure = ::posix_spawnp(&process, words.front().c_str(), &actions, nullptr,
                                       pointers(arguments).data(), pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(output.ends[1]);
    ::close(error.ends[1]);
    if (failure != 0)
        throw std::runtime_error("cannot start " + words.front());

    ProcessResult result;
    std::jthread errorReader([&] { result.standardError = drain(error.ends[0]); });
    std::jthread companion([&] {
        if (whileRunning)
            whileRunning(process);
    });
    result.standardOutput = drain(output.ends[0]);
    int status = 0;
    ::waitpid(process, &status, 0);
    constexpr int kSignalBase = 128;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
    errorReader.join();
    companion.join();
    return result;
}

std::string runPrivileged(std::vector<std::string> words) {
    if (::geteuid() != 0)
        words.insert(words.begin(), {"sudo", "-n"});
    const auto result = run(words);
    if (result.exitCode != 0)
        throw std::runtime_error(words.front() + " failed: " + result.standardError);
    return result.standardOutput;
}

} // namespace slatewise::test
