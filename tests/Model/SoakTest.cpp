#include "Storage/SupportPaths.h"
#include "support/Desk.h"
#include "support/Leaks.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <vector>

using namespace slatewise;
using namespace slatewise::test;

namespace {

constexpr int kUsualOffloads = 30;
/// Caches, threads and tables come into being with the first ones.
constexpr int kWarmUp = 10;
/// A leak grows in each part of the day. A worker that a pool starts late, with its descriptor and
/// its share of the heap, shows in one.
constexpr int kParts = 3;
constexpr std::int64_t kKiBPerOffload = 48;
constexpr std::uintmax_t kStoreBytesPerOffload = 8192;

/// How often a card is offloaded. More than usual is for nights.
int offloads() {
    const auto* wanted = std::getenv("SLATEWISE_SOAK_OFFLOADS");
    return wanted ? std::atoi(wanted) : kUsualOffloads;
}

struct Holdings {
    std::int64_t threads = 0;
    std::int64_t memoryKiB = residentKiB();
    std::int64_t descriptors = entriesOf("/proc/self/fd");
    std::uintmax_t storeBytes = std::filesystem::file_size(SupportPaths::databaseURL());
};

/// How much of one kind was added in the part of the day that added least.
std::int64_t leastGrowth(const std::vector<Holdings>& day, std::int64_t Holdings::*kind) {
    auto least = day[1].*kind - day[0].*kind;
    for (std::size_t part = 2; part < day.size(); ++part)
        least = std::min(least, day[part].*kind - day[part - 1].*kind);
    return least;
}

} // namespace

TEST(Soak, AProgramThatRunsForDaysHoldsNoMoreThanOnItsFirst) {
    Desk desk;
    // One clip: what looks for its facts may leave something behind, too.
    const auto card = desk.mountCard("A001", {{"A.mov", "a"}, {"DCIM/B.dat", "bb"}});
    const auto disk = desk.mountDisk("SSD1");
    desk.start();
    std::vector<Holdings> day;
    const auto perPart = offloads() / kParts;
    for (int offload = 0; offload <= kWarmUp + kParts * perPart; ++offload) {
        if (offload >= kWarmUp && (offload - kWarmUp) % perPart == 0) {
            const auto expected = day.empty() ? threadCount() : day.back().threads;
            day.push_back({.threads = threadCountSoon(expected)});
        }
        desk.selectCard(card, "CamA");
        desk.copy();
        ASSERT_TRUE(std::holds_alternative<Phase::Verified>(desk.model().batch()->phase()))
            << "offload " << offload;
    }
    const auto memory = leastGrowth(day, &Holdings::memoryKiB);
    const auto stored = (day.back().storeBytes - day.front().storeBytes) /
                        static_cast<std::uintmax_t>(kParts * perPart);
    EXPECT_LE(memory, kKiBPerOffload * perPart);
    EXPECT_LE(leastGrowth(day, &Holdings::descriptors), 0);
    EXPECT_LE(leastGrowth(day, &Holdings::threads), 0);
    EXPECT_LE(stored, kStoreBytesPerOffload);
    std::cout << kParts * perPart << " offloads: " << day.back().memoryKiB - day.front().memoryKiB
              << " KiB, " << day.back().descriptors - day.front().descriptors << " descriptors, "
              << day.back().threads - day.front().threads << " threads more; " << stored
              << " bytes of history each\n";
}
