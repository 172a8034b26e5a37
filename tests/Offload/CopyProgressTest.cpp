#include "Offload/CopyProgress.h"

#include <gtest/gtest.h>

using namespace slatewise;
using namespace std::chrono_literals;

TEST(CopyProgress, CopyingMovesTheFirstPartOfTheBar) {
    const SpeedMeter::Time start{};
    CopyProgress byBytes(4, 1000);
    EXPECT_DOUBLE_EQ(byBytes.copying("a", 0, start).fraction, 0);
    byBytes.add(500, start);
    EXPECT_DOUBLE_EQ(byBytes.copying("a", 0, start).fraction, 0.425);
    EXPECT_EQ(byBytes.copying("a", 0, start).done, 1);
    EXPECT_EQ(byBytes.copying("d", 9, start).done, 4);
    byBytes.add(900, start);
    EXPECT_DOUBLE_EQ(byBytes.copying("a", 0, start).fraction, 0.85) << "a source that grew";

    CopyProgress byCount(4, 0);
    EXPECT_DOUBLE_EQ(byCount.copying("c", 2, start).fraction, 0.425);
    EXPECT_DOUBLE_EQ(CopyProgress(0, 0).copying("", 0, start).fraction, 0.85);
    EXPECT_EQ(CopyProgress(0, 0).copying("", 0, start).done, 0);
    EXPECT_EQ(byBytes.hashing("d", 3, start), (Phase::Scanning{"d", 4, 4, 1, 700, 1400, 1000}))
        << "who only hashes has the whole bar";
}

TEST(CopyProgress, VerifyingMovesTheRest) {
    const SpeedMeter::Time start{};
    CopyProgress progress(2, 400);
    EXPECT_DOUBLE_EQ(progress.verifying("a", 0, 0, 100, start).fraction, 0.85);
    EXPECT_DOUBLE_EQ(progress.verifying("b", 1, 300, 100, start).fraction, 1.0);
    EXPECT_DOUBLE_EQ(progress.verifying("b", 1, 0, 0, start).fraction, 0.925);
    progress.add(50, start);
    EXPECT_EQ(progress.verifying("a", 0, 50, 100, start),
              (Phase::Verifying{"a", 0, 2, 0.8875, 25, 50, 400}));
}

TEST(SpeedMeter, CountsTheLastTwoSeconds) {
    const SpeedMeter::Time start{};
    SpeedMeter meter;
    EXPECT_DOUBLE_EQ(meter.bytesPerSecond(start), 0);
    meter.add(1000, start);
    meter.add(2000, start + 1s);
    EXPECT_DOUBLE_EQ(meter.bytesPerSecond(start + 2s), 1500) << "the edge belongs to the window";
    EXPECT_DOUBLE_EQ(meter.bytesPerSecond(start + 2001ms), 1000);
    EXPECT_DOUBLE_EQ(meter.bytesPerSecond(start + 10s), 0);
}

TEST(SpeedMeter, ForgettingOldSamplesChangesNoFigure) {
    const SpeedMeter::Time start{};
    SpeedMeter meter;
    for (int sample = 0; sample < 10'000; ++sample)
        meter.add(10, start + sample * 10ms);
    EXPECT_DOUBLE_EQ(meter.bytesPerSecond(start + 9'999 * 10ms), 201 * 10 * 0.5);
}
