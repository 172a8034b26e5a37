#include "Benches.h"
#include "Scratch.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace slatewise::bench;

/// Which takes minutes to make its files, for a figure that seldom changes.
constexpr const char* kOnlyWhenAsked = "walk-million";

const std::vector<std::pair<std::string, void (*)(const std::filesystem::path&)>> kBenches = {
    {"walk", benchWalk},        {"reports", benchReports}, {"store", benchStore},
    {"memory", benchMemory},    {"proof", benchProof},     {"copy-large", benchLarge},
    {"copy-small", benchSmall}, {"million", benchMillion}, {kOnlyWhenAsked, benchWalkMillion},
};

/// Sends the tables to standard error, and keeps standard output for what a program reads.
int takeStandardOutput() {
    const int output = ::dup(STDOUT_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    return output;
}

void printJSON(int output) {
    const auto text = recordedJSON() + "\n";
    if (::write(output, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("the figures could not be printed");
}

/// A misspelt one would measure nothing and end well.
void requireBenches(std::span<const std::string> names) {
    for (const auto& name : names) {
        if (std::none_of(kBenches.begin(), kBenches.end(),
                         [&](const auto& bench) { return name == bench.first; }))
            throw std::runtime_error("no such bench: " + name);
    }
}

} // namespace

int main(int count, char** words) {
    std::vector<std::string> arguments(words + 1, words + count);
    const bool wantsJSON = std::erase(arguments, "--json") > 0;
    if (arguments.empty()) {
        std::cerr << "Usage: slatewise-bench [--json] FOLDER "
                     "[walk|reports|store|memory|proof|copy-large|copy-small|million|"
                     "walk-million]...\n";
        return 2;
    }
    const int output = wantsJSON ? takeStandardOutput() : -1;
    try {
        requireBenches(std::span(arguments).subspan(1));
        const auto folder = std::filesystem::absolute(arguments.front()) / "slatewise-bench";
        std::filesystem::create_directories(folder);
        for (const auto& [name, bench] : kBenches) {
            if ((arguments.size() == 1 && name != kOnlyWhenAsked) ||
                std::find(arguments.begin() + 1, arguments.end(), name) != arguments.end())
                bench(folder);
        }
        std::filesystem::remove_all(folder);
        std::fflush(stdout);
        if (wantsJSON)
            printJSON(output);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
