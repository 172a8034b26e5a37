#include "Offload/TimecodeFormat.h"

#include "Offload/ReportKind.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>

using namespace slatewise;
using TimecodeFormat::CapTC;
using TimecodeFormat::Counting;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr auto kNone = std::nullopt;

} // namespace

TEST(TimecodeFormat, RatesAreShortAndMismatchMeansMoreThanRounding) {
    const std::map<double, std::string> rates = {
        {25, "25"},       {25.0005, "25"},       {24.0004, "24"},          {24.0011, "24.0011"},
        {29.97, "29.97"}, {23.976, "23.976"},    {23.976023976, "23.976"}, {0, "0"},
        {-0.0001, "0"},   {119.88012, "119.88"}, {1e9, "1000000000"},      {kInfinity, "inf"}};
    for (const auto& [rate, text] : rates)
        EXPECT_EQ(TimecodeFormat::fpsString(rate), text);

    EXPECT_EQ(TimecodeFormat::capTC(kNone, kNone), (CapTC{"—", false}));
    EXPECT_EQ(TimecodeFormat::capTC(25, kNone), (CapTC{"25 / —", false}));
    EXPECT_EQ(TimecodeFormat::capTC(kNone, 29.97), (CapTC{"— / 29.97", false}));
    EXPECT_EQ(TimecodeFormat::capTC(23.976, 24), (CapTC{"23.976 / 24", false}));
    EXPECT_EQ(TimecodeFormat::capTC(29.97, 30), (CapTC{"29.97 / 30", false}));
    EXPECT_EQ(TimecodeFormat::capTC(25, 24), (CapTC{"25 / 24", true}));
    EXPECT_EQ(TimecodeFormat::capTC(24, 24.06), (CapTC{"24 / 24.06", true}));
}

TEST(TimecodeFormat, RangeShowsWhatThereIs) {
    EXPECT_EQ(TimecodeFormat::range(" 01:00:00:00\n", "01:00:10:00"), "01:00:00:00 → 01:00:10:00");
    EXPECT_EQ(TimecodeFormat::range("01:00:00:00", kNone), "01:00:00:00");
    EXPECT_EQ(TimecodeFormat::range(" ", "01:00:10:00"), "01:00:10:00");
    EXPECT_EQ(TimecodeFormat::range(kNone, "\t"), "—");
}

TEST(FrameRate, IsTheFractionThatADecimalStandsFor) {
    const std::map<double, std::optional<FrameRate>> cases = {
        {23.976, FrameRate::of(24000, 1001)},
        {23.98, FrameRate::of(24000, 1001)},
        {24000.0 / 1001, FrameRate::of(24000, 1001)},
        {29.97, FrameRate::of(30000, 1001)},
        {119.88, FrameRate::of(120000, 1001)},
        {24.0004, FrameRate::of(24, 1)},
        {12.5, FrameRate::of(50, 4)},
        {0, kNone},
        {-25, kNone},
        {1e-9, kNone},
        {1e300, kNone},
        {kInfinity, kNone},
    };
    for (const auto& [decimal, rate] : cases)
        EXPECT_EQ(FrameRate::near(decimal), rate) << decimal;
    EXPECT_EQ(FrameRate::near(kNaN), kNone);
    EXPECT_EQ(FrameRate::of(0, 1), kNone);
    EXPECT_EQ(FrameRate::of(25, 0), kNone);
}

TEST(TimecodeFormat, CountsWholeFrames) {
    struct Case {
        double seconds, rate;
        std::optional<std::int64_t> frames;
    };
    const Case cases[] = {
        {10, 25, 250},          {10, 29.97, 299},    {0, 25, 0},
        {600.6, 23.976, 14400}, {1.668, 59.94, 100}, {86400, 24000.0 / 1001, 2071528},
        {-1, 25, kNone},        {kNaN, 25, kNone},   {kInfinity, 25, kNone},
        {1e300, 25, kNone},
    };
    for (const auto& [seconds, rate, frames] : cases)
        EXPECT_EQ(TimecodeFormat::framesIn(seconds, *FrameRate::near(rate)), frames)
            << seconds << " at " << rate;
}

TEST(TimecodeFormat, NumbersFramesWithAndWithoutDropping) {
    struct Case {
        std::int64_t frame;
        double rate;
        Counting counting;
        const char* text;
    };
    using enum Counting;
    const Case cases[] = {
        {0, 25, NonDrop, "00:00:00:00"},           {250, 25, NonDrop, "00:00:10:00"},
        {9'000'000, 25, NonDrop, "100:00:00:00"},  {1, 0.2, NonDrop, "00:00:01:00"},
        {14399, 23.976, DropFrame, "00:09:59:23"}, {1799, 29.97, DropFrame, "00:00:59:29"},
        {1800, 29.97, DropFrame, "00:01:00:02"},   {1800, 29.97, NonDrop, "00:01:00:00"},
        {1800, 30, DropFrame, "00:01:00:00"},      {17981, 29.97, DropFrame, "00:09:59:29"},
        {17982, 29.97, DropFrame, "00:10:00:00"},  {107892, 29.97, DropFrame, "01:00:00:00"},
        {3599, 59.94, DropFrame, "00:00:59:59"},   {3600, 59.94, DropFrame, "00:01:00:04"},
        {35964, 59.94, DropFrame, "00:10:00:00"},
    };
    for (const auto& [frame, perSecond, counting, text] : cases) {
        const auto rate = *FrameRate::near(perSecond);
        EXPECT_EQ(TimecodeFormat::text(frame, rate, counting), text);
        EXPECT_EQ(TimecodeFormat::frameNumber(text, rate, counting), frame) << text;
    }
    // Every number of an hour that is not left out comes, and in turn.
    const auto rate = *FrameRate::near(29.97);
    for (std::int64_t frame = 0; frame < 107'892; ++frame)
        ASSERT_EQ(TimecodeFormat::frameNumber(TimecodeFormat::text(frame, rate, DropFrame), rate,
                                              DropFrame),
                  frame);
}

TEST(TimecodeFormat, EndsAtTheLastFrame) {
    struct Case {
        const char* start;
        std::int64_t frames;
        double rate;
        std::optional<std::string> end;
    };
    const Case cases[] = {
        {"01:00:00;10", 30, 30, "01:00:01:09"},
        {"23:59:59:24", 2, 25, "24:00:00:00"},
        {"01:00:00:00", 1, 25, "01:00:00:00"},
        {"x:01:00:00:00", 26, 25, "01:00:01:00"},
        {"01:00", 1, 30, kNone},
        {"01:00:00:00:00", 1, 30, kNone},
        {"01:00:00:0x", 1, 30, kNone},
        {"01:-1:00:00", 1, 30, kNone},
        {"01:00:00:00", 0, 30, kNone},
        {"9223372036854775807:00:00:00", 1, 25, kNone},
        {"99999999999999999999:01:00:00", 1, 25, kNone},
    };
    for (const auto& [start, frames, rate, end] : cases)
        EXPECT_EQ(
            TimecodeFormat::lastFrame(start, frames, *FrameRate::near(rate), Counting::NonDrop),
            end)
            << start << " + " << frames;
}

TEST(ReportKind, GoesByTheExtensionOfTheLastPart) {
    const std::map<std::string, std::string_view> cases = {
        {"CLIP.MXF", "video"},      {"a/b.c/x.R3D", "video"},
        {"take.Wav", "audio"},      {"still.CR3", "image"},
        {"sidecar.bin", "sidecar"}, {"A.cube", "sidecar"},
        {"x.mov.txt", "sidecar"},   {"noextension", "file"},
        {"folder.mov/x", "file"},   {".mov", "file"},
        {"trailing.", "file"},      {"x.mov ", "file"},
        {"\xff.mp4", "video"},      {"", "file"},
        {"x.ogg", "audio"},
    };
    for (const auto& [name, kind] : cases)
        EXPECT_EQ(rawValue(reportKindOf(name)), kind) << name;
    EXPECT_EQ(rawValue(ReportKind::Folder), "folder");
}
