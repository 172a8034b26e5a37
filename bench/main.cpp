#include "Benches.h"

#include <exception>
#include <iostream>

int main(int count, char** words) {
    if (count != 2) {
        std::cerr << "Usage: slatewise-bench FOLDER\n";
        return 2;
    }
    try {
        const auto folder = std::filesystem::absolute(words[1]) / "slatewise-bench";
        std::filesystem::create_directories(folder);
        slatewise::bench::benchWalk(folder);
        slatewise::bench::benchStore(folder);
        slatewise::bench::benchMemory(folder);
        slatewise::bench::benchCopy(folder);
        std::filesystem::remove_all(folder);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
