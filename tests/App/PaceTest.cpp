#include "App/Person.h"
#include "support/Heartbeat.h"

#include <gtest/gtest.h>

#include <QQuickWindow>

#include <atomic>
#include <chrono>

// How the window keeps up with a copy at full speed.

namespace {

using namespace slatewise::test;
using Clock = std::chrono::steady_clock;

constexpr std::int64_t kMiB = 1 << 20;
#ifdef SLATEWISE_ADDRESS_SANITIZER
// Sanitizers take several times as long for each picture.
constexpr double kFewestPerSecond = 5;
constexpr std::chrono::milliseconds kLongestStall{500};
#else
/// A screen shows 60 pictures a second; a slow machine gets some slack.
constexpr double kFewestPerSecond = 40;
constexpr std::chrono::milliseconds kLongestStall{50};
#endif

struct Pace {
    double picturesPerSecond = 0;
    std::chrono::milliseconds longestStall{};

    bool isGood() const {
        return picturesPerSecond > kFewestPerSecond && longestStall < kLongestStall;
    }
};

Pace paceOfACopy() {
    Person person;
    person.makeReady(6, 64 * kMiB);

    auto& model = person.application().model();
    auto& window = person.application().window();
    std::atomic<int> pictures = 0;
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [&] { ++pictures; }, Qt::DirectConnection);
    const Heartbeat heartbeat;
    person.click(person.see("copy"));
    Person::wait("begin", [&] { return model.batch()->fraction() > 0; });
    const auto begin = Clock::now();
    pictures = 0;
    Person::wait("end of copying", [&] { return model.batch()->fraction() > 0.84; });
    const double perSecond = pictures / std::chrono::duration<double>(Clock::now() - begin).count();
    Person::wait("end", [&] { return !model.batch()->isBusy(); });

    return {perSecond, heartbeat.longest()};
}

TEST(Pace, ACopyIsShownAsItGoesAndNeverHoldsUpTheWindow) {
    // What holds up the window does so each time; what else a machine is at does not.
    Pace pace;
    for (int left = 3; left > 0 && !pace.isGood(); --left)
        pace = paceOfACopy();
    EXPECT_GT(pace.picturesPerSecond, kFewestPerSecond);
    EXPECT_LT(pace.longestStall, kLongestStall);
    RecordProperty("picturesPerSecond", std::to_string(pace.picturesPerSecond));
    RecordProperty("longestStallMilliseconds", static_cast<int>(pace.longestStall.count()));
}

} // namespace
