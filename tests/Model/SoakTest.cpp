#include "Storage/SupportPaths.h"
#include "support/Desk.h"
#include "support/Leaks.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>

using namespace slatewise;
using namespace slatewise::test;

namespace {

constexpr int kUsualOffloads = 30;
/// Caches, threads and tables come into being with the first ones.
constexpr int kWarmUp = 10;
constexpr std::int64_t kKiBPerOffload = 48;
constexpr std::uintmax_t kStoreBytesPerOffload = 8192;

/// How often a card is offloaded. More than usual is for nights.
int offloads() {
    const auto* wanted = std::getenv("SLATEWISE_SOAK_OFFLOADS");
    return wanted ? std::atoi(wanted) : kUsualOffloads;
}

struct Holdings {
    std::int64_t memoryKiB = residentKiB();
    std::ptrdiff_t descriptors = entriesOf("/proc/self/fd");
    std::ptrdiff_t threads = threadCount();
    std::uintmax_t storeBytes = std::filesystem::file_size(SupportPaths::databaseURL());
};

} // namespace

TEST(Soak, AProgramThatRunsForDaysHoldsNoMoreThanOnItsFirst) {
    Desk desk;
    const auto card = desk.mountCard("A001", {{"A.mov", "a"}, {"DCIM/B.mov", "bb"}});
    const auto disk = desk.mountDisk("SSD1");
    desk.start();
    std::optional<Holdings> before;
    for (int offload = 0; offload < kWarmUp + offloads(); ++offload) {
        desk.selectCard(card, "CamA");
        desk.copy();
        ASSERT_TRUE(std::holds_alternative<Phase::Verified>(desk.model().batch()->phase()))
            << "offload " << offload;
        if (offload + 1 == kWarmUp)
            before.emplace();
    }
    const Holdings after{.threads = threadCountSoon(before->threads)};
    const auto growth = after.memoryKiB - before->memoryKiB;
    const auto stored =
        (after.storeBytes - before->storeBytes) / static_cast<std::uintmax_t>(offloads());
    EXPECT_LE(growth, kKiBPerOffload * offloads());
    EXPECT_LE(after.descriptors, before->descriptors);
    EXPECT_LE(after.threads, before->threads);
    EXPECT_LE(stored, kStoreBytesPerOffload);
    std::cout << offloads() << " offloads: " << growth << " KiB, "
              << after.descriptors - before->descriptors << " descriptors, "
              << after.threads - before->threads << " threads more; " << stored
              << " bytes of history each\n";
}
