#include "Benches.h"
#include "Scratch.h"

#include "Offload/TreeWalker.h"

#include <fmt/format.h>

#include <tuple>

namespace slatewise::bench {

void benchWalk(const std::filesystem::path& folder) {
    constexpr int kFolders = 2000;
    constexpr int kFilesPerFolder = 99;
    constexpr int kRounds = 7;
    const auto tree = folder / "tree";
    makeFiles(tree, kFolders * kFilesPerFolder, 0, kFilesPerFolder);

    const auto find =
        fmt::format("find {} -printf '%P %y %s %T@ %B@\\n' > /dev/null", shellQuoted(tree));
    std::vector<double> walkWall, findWall, walkCpu, findCpu;
    for (int round = 0; round < kRounds; ++round) {
        walkCpu.push_back(cpuSeconds([&] {
            walkWall.push_back(wallSeconds(
                [&] { (void)TreeWalker::walk(RootFolder(tree), TreeWalker::defaultSkipNames()); }));
        }));
        findCpu.push_back(
            cpuSeconds([&] { findWall.push_back(wallSeconds([&] { shell(find); })); }));
    }
    std::filesystem::remove_all(tree);
    for (const auto& [way, wall, cpu] : {std::tuple("find -printf", &findWall, &findCpu),
                                         std::tuple("walk", &walkWall, &walkCpu)}) {
        record("walk of 200,000 entries", way, "seconds", median(*wall));
        record("walk of 200,000 entries", way, "cpu_seconds", median(*cpu));
    }
    fmt::print("Walk of {} entries with warm caches, median of {} rounds\n",
               kFolders * (kFilesPerFolder + 1), kRounds);
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU\n", "find -printf", median(findWall),
               median(findCpu));
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU  {:6.2f} x find\n\n", "walk", median(walkWall),
               median(walkCpu), median(walkWall) / median(findWall));
}

} // namespace slatewise::bench
