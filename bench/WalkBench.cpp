#include "Benches.h"
#include "Scratch.h"

#include "Offload/TreeWalker.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace slatewise::bench {

namespace {

constexpr int kFilesPerFolder = 99;

void walkBesideFind(const std::filesystem::path& tree, const std::string& name, int rounds) {
    const auto find =
        fmt::format("find {} -printf '%P %y %s %T@ %B@\\n' > /dev/null", shellQuoted(tree));
    std::vector<double> walkWall, findWall, walkCpu, findCpu;
    for (int round = 0; round < rounds; ++round) {
        walkCpu.push_back(cpuSeconds([&] {
            walkWall.push_back(wallSeconds(
                [&] { (void)TreeWalker::walk(RootFolder(tree), TreeWalker::defaultSkipNames()); }));
        }));
        findCpu.push_back(
            cpuSeconds([&] { findWall.push_back(wallSeconds([&] { shell(find); })); }));
    }
    for (const auto& [way, wall, cpu] : {std::tuple("find -printf", &findWall, &findCpu),
                                         std::tuple("walk", &walkWall, &walkCpu)}) {
        record(name, way, "seconds", median(*wall));
        record(name, way, "cpu_seconds", median(*cpu));
    }
    fmt::print("{} with warm caches, median of {} rounds\n", name, rounds);
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU\n", "find -printf", median(findWall),
               median(findCpu));
    fmt::print("  {:<20}{:8.3f} s  {:8.3f} s CPU  {:6.2f} x find\n", "walk", median(walkWall),
               median(walkCpu), median(walkWall) / median(findWall));
}

long peakKilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// What a list of the tree adds to the peak of a process that has done nothing else.
double bytesOfWalk(const std::filesystem::path& tree) {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        const auto before = peakKilobytes();
        const auto entries = TreeWalker::walk(RootFolder(tree), TreeWalker::defaultSkipNames());
        const double bytes = 1024.0 * static_cast<double>(peakKilobytes() - before);
        const bool isTold =
            !entries.empty() && ::write(ends[1], &bytes, sizeof bytes) == sizeof bytes;
        ::_exit(isTold ? 0 : 1);
    }
    ::close(ends[1]);
    double bytes = 0;
    const bool isTold = ::read(ends[0], &bytes, sizeof bytes) == sizeof bytes;
    ::close(ends[0]);
    int status = 0;
    if (::waitpid(child, &status, 0) != child || status != 0 || !isTold)
        throw std::runtime_error("measuring the walk failed");
    return bytes;
}

} // namespace

void benchWalk(const std::filesystem::path& folder) {
    constexpr int kFolders = 2000;
    constexpr int kRounds = 7;
    const auto tree = folder / "tree";
    makeFiles(tree, kFolders * kFilesPerFolder, 0, kFilesPerFolder);
    walkBesideFind(tree, "walk of 200,000 entries", kRounds);
    std::filesystem::remove_all(tree);
    fmt::print("\n");
}

void benchWalkMillion(const std::filesystem::path& folder) {
    constexpr int kFolders = 10'000;
    constexpr int kEntries = kFolders * (kFilesPerFolder + 1);
    constexpr int kRounds = 3;
    const std::string name = "walk of 1,000,000 entries";
    const auto tree = folder / "tree";
    makeFiles(tree, kFolders * kFilesPerFolder, 0, kFilesPerFolder);
    const double bytes = bytesOfWalk(tree) / kEntries;
    walkBesideFind(tree, name, kRounds);
    record(name, "walk", "bytes_per_entry", bytes);
    fmt::print("  {:<20}{:8.0f} bytes an entry\n\n", "walk", bytes);
    std::filesystem::remove_all(tree);
}

} // namespace slatewise::bench
