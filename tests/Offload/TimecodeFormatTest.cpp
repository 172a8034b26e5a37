#include "Offload/TimecodeFormat.h"

#include "Offload/ReportKind.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>

using namespace slatewise;
using TimecodeFormat::CapTC;

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

TEST(TimecodeFormat, LengthsCountAtTheNominalRate) {
    struct Case {
        double seconds, rate;
        const char* text;
    };
    const Case cases[] = {
        {10, 25, "00:00:10:00"},
        {10, 29.97, "00:00:09:29"},
        {0, 25, "00:00:00:00"},
        {10, 0, "—"},
        {10, -25, "—"},
        {-1, 25, "—"},
        {kNaN, 25, "—"},
        {kInfinity, 25, "—"},
        {10, kNaN, "—"},
        {0, kInfinity, "—"},
        {1e300, 25, "—"},
        {1e-3, 1e300, "—"},
        {360'000, 25, "100:00:00:00"},
        {5, 0.2, "00:00:01:00"},
        {3661.5, 24, "01:01:01:12"},
        {3600, 24000.0 / 1001, "00:59:56:09"},
    };
    for (const auto& [seconds, rate, text] : cases)
        EXPECT_EQ(TimecodeFormat::durationTC(seconds, rate), text) << seconds << " at " << rate;
}

TEST(TimecodeFormat, AddsLengthsToATimecode) {
    struct Case {
        const char* start;
        double seconds, rate;
        std::optional<std::string> sum;
    };
    const Case cases[] = {
        {"01:00:00;10", 1, 30, "01:00:01:10"},
        {"23:59:59:24", 0.04, 25, "24:00:00:00"},
        {"99:59:59:24", 0.04, 25, "100:00:00:00"},
        {"01:00:00:00", 10, 29.97, "01:00:09:29"},
        {"x:01:00:00:00", 1, 25, "01:00:01:00"},
        {"01:00", 1, 30, kNone},
        {"01:00:00:00:00", 1, 30, kNone},
        {"01:00:00:0x", 1, 30, kNone},
        {"01:00:00:00", -1, 30, kNone},
        {"01:00:00:00", kNaN, 30, kNone},
        {"01:00:00:00", kInfinity, 30, kNone},
        {"01:00:00:00", 1, 0, kNone},
        {"9223372036854775807:00:00:00", 1, 25, kNone},
        {"99999999999999999999:01:00:00", 1, 25, kNone},
    };
    for (const auto& [start, seconds, rate, sum] : cases)
        EXPECT_EQ(TimecodeFormat::adding(start, seconds, rate), sum) << start << " + " << seconds;
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
