#include "support/Daemon.h"

#include "support/Process.h"
#include "support/Waiting.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <stdexcept>

extern char** environ;

namespace slatewise::test {

namespace {

/// The file's text up to its first line's end, once that is written.
std::string firstLineOf(const std::filesystem::path& file) {
    const auto isWritten = [&] {
        return std::filesystem::exists(file) && readFile(file).find('\n') != std::string::npos;
    };
    if (!waitForFile(file, isWritten))
        throw std::runtime_error("nothing said in " + file.native());
    const auto text = readFile(file);
    return text.substr(0, text.find('\n'));
}

} // namespace

Daemon::Daemon(std::vector<std::string> words, Owner owner) : owner_(owner) {
    std::vector<std::string> command = {"setpriv",
                                        "--pdeathsig",
                                        "TERM",
                                        "sh",
                                        "-c",
                                        "echo $$ > \"$0/pid\"; exec \"$@\" > \"$0/said\" 2>&1",
                                        folder_.path().native()};
    if (owner_ == Owner::Root && ::geteuid() != 0)
        command.insert(command.begin(), {"sudo", "-n"});
    command.insert(command.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (auto& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (::posix_spawnp(&child_, arguments.front(), nullptr, nullptr, arguments.data(), environ) !=
        0)
        throw std::runtime_error("cannot start " + words.front());
    firstLineOf(folder_ / "pid");
}

Daemon::~Daemon() {
    try {
        send("CONT");
        send("TERM");
    } catch (const std::exception& failure) {
        std::cerr << "left running: " << failure.what() << "\n";
    }
    ::waitpid(child_, nullptr, 0);
}

void Daemon::send(const std::string& signal) const {
    const std::vector<std::string> words = {"kill", "-" + signal, firstLineOf(folder_ / "pid")};
    if (owner_ == Owner::Root)
        runPrivileged(words);
    else if (const auto sent = run(words); sent.exitCode != 0)
        throw std::runtime_error("kill failed: " + sent.standardError);
}

std::string Daemon::firstLine() const {
    return firstLineOf(folder_ / "said");
}

} // namespace slatewise::test
