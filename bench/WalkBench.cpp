#include "Benches.h"
#include "Scratch.h"

#include "Offload/TreeWalker.h"

#include <fmt/format.h>

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
    fmt::print("Walk of {} entries with warm caches, median of {} rounds\n",
               kFolders * (kFilesPerFolder + 1), kRounds);
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU\n", "find -printf", median(findWall),
               median(findCpu));
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU  {:6.2f} x find\n\n", "walk", median(walkWall),
               median(walkCpu), median(walkWall) / median(findWall));
}

} // namespace slatewise::bench
