#include "Views/LaunchWindow.h"

#include <gtest/gtest.h>

namespace {

using slatewise::LaunchWindow::frame;

struct Case {
    const char* name;
    QRect window;
    QRect visible;
    QRect expected;
};

TEST(LaunchWindow, FillsTheScreensHeightAndMovesOnlyAsFarAsItMust) {
    const Case cases[] = {
        {"stays where it is", {100, 50, 600, 400}, {0, 0, 1920, 1080}, {100, 0, 984, 1080}},
        {"below a bar at the top", {100, 50, 600, 400}, {0, 32, 1440, 800}, {100, 32, 984, 800}},
        {"over the right edge", {1500, 0, 400, 400}, {0, 0, 1920, 1080}, {936, 0, 984, 1080}},
        {"touching the right edge", {936, 0, 984, 400}, {0, 0, 1920, 1080}, {936, 0, 984, 1080}},
        {"left of the screen", {-300, 0, 984, 400}, {0, 0, 1920, 1080}, {0, 0, 984, 1080}},
        {"screen too narrow", {40, 0, 984, 400}, {0, 0, 800, 600}, {0, 0, 800, 600}},
        {"a laptop at twice the size", {0, 0, 984, 400}, {0, 0, 720, 450}, {0, 0, 720, 450}},
        {"beside a dock", {0, 0, 984, 400}, {72, 0, 1848, 1080}, {72, 0, 984, 1080}},
        {"second screen", {2900, 200, 984, 400}, {1920, 0, 1600, 900}, {2536, 0, 984, 900}},
    };
    for (const auto& [name, window, visible, expected] : cases)
        EXPECT_EQ(frame(window, visible), expected) << name;
}

} // namespace
