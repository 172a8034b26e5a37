#include "Benches.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace slatewise::bench;

const std::vector<std::pair<std::string, void (*)(const std::filesystem::path&)>> kBenches = {
    {"walk", benchWalk},     {"reports", benchReports},  {"store", benchStore},
    {"memory", benchMemory}, {"copy-large", benchLarge}, {"copy-small", benchSmall},
};

} // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + 1, words + count);
    if (arguments.empty()) {
        std::cerr << "Usage: slatewise-bench FOLDER "
                     "[walk|reports|store|memory|copy-large|copy-small]...\n";
        return 2;
    }
    try {
        const auto folder = std::filesystem::absolute(arguments.front()) / "slatewise-bench";
        std::filesystem::create_directories(folder);
        for (const auto& [name, bench] : kBenches) {
            if (arguments.size() == 1 ||
                std::find(arguments.begin() + 1, arguments.end(), name) != arguments.end())
                bench(folder);
        }
        std::filesystem::remove_all(folder);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
