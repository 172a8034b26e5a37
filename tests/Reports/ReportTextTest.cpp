#include "Reports/ReportText.h"

#include "Reports/EssenceText.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>

using namespace slatewise;
using namespace ::testing;

namespace {

constexpr auto kEnglish = AppLanguage::English;
constexpr auto kTurkish = AppLanguage::Turkish;

/// English writes a narrow blank before AM and PM, which is hard to see in a test.
std::string plain(std::string text) {
    for (std::size_t at; (at = text.find("\u202f")) != std::string::npos;)
        text.replace(at, 3, " ");
    return text;
}

ClipEssence fullEssence() {
    ClipEssence essence;
    essence.cameraModel = "ALEXA 35";
    essence.cameraSerial = "1234";
    essence.cameraId = "R0ZG";
    essence.supVersion = "1.02";
    essence.production = "Gece";
    essence.location = "Bebek";
    essence.recordedDate = "UTC 20260301 213015";
    essence.codec = "ARRIRAW";
    essence.codecProfile = "HDE";
    essence.width = 4480;
    essence.height = 3096;
    essence.gamma = "LogC4";
    essence.whiteBalanceK = 5600;
    essence.shutterDegrees = 172.8;
    essence.lens = "SP 40";
    essence.sxsSerial = "S-9";
    essence.sensorFps = 24;
    essence.projectFps = 23.976;
    essence.exposureIndex = 800;
    essence.lookName = "K445";
    return essence;
}

} // namespace

TEST(ReportText, DatesSpeakTheReportsLanguageInTheMachinesZone) {
    const auto moment = *Clock::fromIso8601("2026-03-01T21:30:15Z");
    EXPECT_EQ(plain(ReportText::dateTime(moment, kEnglish)), "Mar 2, 2026, 12:30 AM");
    EXPECT_EQ(ReportText::dateTime(moment, kTurkish), "2 Mar 2026 00:30");
    EXPECT_EQ(ReportText::fileModified(moment), "2026-03-02 00:30:15");
    EXPECT_EQ(ReportText::fileModified(Instant() - std::chrono::microseconds(1)),
              "1970-01-01 01:59:59");
}

TEST(ReportText, ReadsDatesAsCamerasWriteThem) {
    const std::pair<const char*, const char*> cases[] = {
        {" UTC 20260301 213015\n", "Mar 2, 2026, 12:30 AM"},
        {"utc 2026-03-01 21:30:15", "Mar 2, 2026, 12:30 AM"},
        {"20260301 213015", "Mar 1, 2026, 9:30 PM"},
        {"20260301 21:30:15", "Mar 1, 2026, 9:30 PM"},
        {"20260301T213015", "Mar 1, 2026, 9:30 PM"},
        {"2026-03-01 21:30:15.250", "Mar 1, 2026, 9:30 PM"},
        {"2026-03-01 21:30:15", "Mar 1, 2026, 9:30 PM"},
        {"2026-03-01T21:30:15Z", "Mar 2, 2026, 12:30 AM"},
        {"2026-03-01T21:30:15+0100", "Mar 1, 2026, 11:30 PM"},
        {"2026-03-01T21:30:15", "Mar 1, 2026, 9:30 PM"},
        {"20260301", "Mar 1, 2026"},
        {"2026-03-01", "Mar 1, 2026"},
        {"UTC 20260301", "Mar 1, 2026"},
        {"2026-03-14 09:15:02 UTC", "Mar 14, 2026, 12:15 PM"},
        {"0000-00-00 00:00:00", ""},
        {"UTC 1904-01-01 00:00:00", ""},
        {"2026-02-30", "2026-02-30"},
        {"20260301 253015", "20260301 253015"},
        {"2026-03-01 21:30:15 or so", "2026-03-01 21:30:15 or so"},
        {"UTC", "UTC"},
        {" not a date ", "not a date"},
        {"bad \xff", "bad \xff"},
        {"", ""},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(plain(ReportText::formatClipDate(text, kEnglish)), shown) << text;
    EXPECT_EQ(ReportText::formatClipDate("20260301", kTurkish), "1 Mar 2026");
}

TEST(ReportText, TimingLeavesOutWhatSaysNothing) {
    ManifestFile file;
    EXPECT_THAT(ReportText::timingLines(file, kEnglish), IsEmpty());
    file.media.edit().durationTC = " ";
    file.media.edit().timecodeDropFrame = true;
    EXPECT_THAT(ReportText::timingLines(file, kEnglish), ElementsAre("—  DF"));
    file.media.edit().timecodeStart = "01:00:00:00";
    file.media.edit().timecodeEnd = "01:00:10:00";
    file.media.edit().durationTC = "00:00:10:00";
    file.media.edit().captureFps = 25;
    file.media.edit().timecodeRate = 23.976;
    file.media.edit().timecodeDropFrame = false;
    EXPECT_THAT(ReportText::timingLines(file, kEnglish),
                ElementsAre("01:00:00:00 → 01:00:10:00", "00:00:10:00", "25 / 23.976  NDF"));
    file.media.edit().timecodeDropFrame.reset();
    EXPECT_EQ(ReportText::timingLines(file, kEnglish).back(), "25 / 23.976");
    EXPECT_EQ(ReportText::timingLines(file, kTurkish).back(), "25 / 23,976");
}

TEST(ReportText, CardFactsStandInOrderOneSubjectALine) {
    EXPECT_THAT(EssenceText::cardLines(fullEssence(), kEnglish),
                ElementsAre("ALEXA 35  SN 1234  Cam R0ZG", "SUP 1.02",
                            "UTC 20260301 213015  ·  Bebek", "Gece",
                            "23.976 fps  ·  LogC4  ·  5600K  ·  shutter 172.8°  ·  EI 800",
                            "SP 40  ·  SxS S-9"));
    ClipEssence some;
    some.cameraModel = "";
    some.cameraId = "A";
    some.location = "Bebek";
    some.projectFps = 23.976;
    some.shutterDegrees = 180;
    some.sxsSerial = "9";
    EXPECT_THAT(EssenceText::cardLines(some, kTurkish),
                ElementsAre("Cam A", "Bebek", "23,976 fps  ·  shutter 180,0°", "SxS 9"));

    EXPECT_EQ(plain(ReportText::cardFactsLine(fullEssence(), kEnglish)),
              "ALEXA 35  SN 1234  Cam R0ZG  ·  SUP 1.02  ·  Mar 2, 2026, 12:30 AM  ·  Bebek  ·  "
              "Gece  ·  23.976 fps  ·  LogC4  ·  5600K  ·  shutter 172.8°  ·  EI 800  ·  "
              "SP 40  ·  SxS S-9");
    EXPECT_EQ(ReportText::cardFactsLine({}, kTurkish), "");
}

TEST(EssenceText, NamesCodecsAndSizes) {
    const std::tuple<int, int, const char*> sizes[] = {
        {1920, 1080, "1920×1080 (HD)"},
        {2048, 1152, "2048×1152 (2K)"},
        {3840, 2160, "3840×2160 (UHD)"},
        {4480, 1856, "4480×1856 (4K OG)"},
        {4480, 3096, "4480×3096 (4K 3:2)"},
        {1080, 1920, "1080×1920"},
        {1, 1, "1×1"},
    };
    for (const auto& [width, height, label] : sizes) {
        ClipEssence essence;
        essence.width = width;
        EXPECT_EQ(EssenceText::resolutionLabel(essence), std::nullopt);
        essence.height = height;
        EXPECT_EQ(EssenceText::resolutionLabel(essence), label);
        essence.width = 0;
        EXPECT_EQ(EssenceText::resolutionLabel(essence), std::nullopt);
    }
    ClipEssence essence;
    EXPECT_EQ(EssenceText::recordLabel(essence), std::nullopt);
    essence.codecProfile = "4444";
    EXPECT_EQ(EssenceText::recordLabel(essence), "4444");
    essence.codec = "ProRes";
    EXPECT_EQ(EssenceText::recordLabel(essence), "ProRes 4444");
}

TEST(EssenceText, ClipsSayOnlyWhatTheCardDoesNot) {
    const auto clip = fullEssence();
    EXPECT_THAT(EssenceText::clipLines(clip, clip, kEnglish),
                ElementsAre("ARRIRAW HDE", "4480×3096 (4K 3:2)"));
    EXPECT_THAT(EssenceText::clipLines(clip, {}, kEnglish),
                ElementsAre("ARRIRAW HDE", "4480×3096 (4K 3:2)", "K445  ·  EI 800"));
    EXPECT_THAT(EssenceText::clipLines({}, {}, kEnglish), IsEmpty());

    const auto sensorFact = [](double sensor, std::optional<double> commonSensor,
                               std::optional<double> commonProject,
                               AppLanguage language = kEnglish) {
        ClipEssence essence;
        essence.sensorFps = sensor;
        ClipEssence common;
        common.sensorFps = commonSensor;
        common.projectFps = commonProject;
        const auto lines = EssenceText::clipLines(essence, common, language);
        return lines.empty() ? "" : lines.front();
    };
    EXPECT_EQ(sensorFact(25, {}, 25.02), "");
    EXPECT_EQ(sensorFact(25, {}, 24), "sensor 25 fps");
    EXPECT_EQ(sensorFact(25, 25, 24), "") << "the sensor's rate outranks the project's";
    EXPECT_EQ(sensorFact(59.94, 25, {}), "sensor 59.94 fps");
    EXPECT_EQ(sensorFact(59.94, 25, {}, kTurkish), "sensor 59,94 fps");
    EXPECT_EQ(sensorFact(25, {}, {}), "");
}
