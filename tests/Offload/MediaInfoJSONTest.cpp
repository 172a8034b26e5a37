#include "Offload/MediaInfoCLI/MediaInfoJSON.h"

#include <gmock/gmock.h>

using namespace slatewise;

namespace {

constexpr auto kNone = std::nullopt;

MediaMetadata read(const std::string& tracks) {
    return MediaInfoJSON::metadata(R"({"media": {"track": )" + tracks + "}}");
}

/// A file's facts, those of its picture and those of its timecode track.
MediaMetadata read(const std::string& general, const std::string& video,
                   const std::string& timecode) {
    const auto track = [](const std::string& type, const std::string& fields) {
        return R"({"@type": ")" + type + "\"" + (fields.empty() ? "" : ", ") + fields + "}";
    };
    return read("[" + track("General", general) + "," + track("Video", video) + "," +
                track("Other\", \"Type\": \"Time code", timecode) + "]");
}

ClipEssence essenceOf(const std::string& general, const std::string& video = "") {
    return read(general, video, "").essence.value_or(ClipEssence());
}

ClipEssence cameraFact(const std::string& key, const std::string& value) {
    return essenceOf(R"("extra": {"com_arri_camera_)" + key + R"(": ")" + value + "\"}");
}

} // namespace

TEST(MediaInfoJSON, ReadsAClipWithTimecode) {
    const auto facts = read(R"("FrameRate": "23.976", "Encoded_Date": "UTC 2026-01-02 03:04:05")",
                            R"("Format": "ProRes", "Format_Profile": "422 HQ", "Width": "1 920",
                               "Height": "1080", "FrameRate": "23.976",
                               "Duration_String3": "00:01:40.046", "TimeCode_FirstFrame": "x")",
                            R"("FrameRate_Num": "24000", "FrameRate_Den": "1001",
                               "TimeCode_FirstFrame": "1:00:00;00")");
    EXPECT_EQ(facts.timecodeStart, "01:00:00:00");
    EXPECT_EQ(facts.timecodeEnd, "01:01:39:21") << "the last of 2398 frames";
    EXPECT_EQ(facts.durationTC, "00:01:39:22");
    EXPECT_EQ(facts.durationSeconds, 100.05);
    EXPECT_EQ(facts.captureFps, 23.976);
    EXPECT_DOUBLE_EQ(facts.timecodeRate.value(), 24000.0 / 1001);
    EXPECT_EQ(facts.timecodeDropFrame, true);
    ClipEssence essence;
    essence.codec = "ProRes";
    essence.codecProfile = "422 HQ";
    essence.width = 1920;
    essence.height = 1080;
    essence.sensorFps = 23.976;
    essence.recordedDate = "UTC 2026-01-02 03:04:05";
    EXPECT_EQ(facts.essence, essence);
}

TEST(MediaInfoJSON, HasNothingToSayAboutAnythingElse) {
    for (const auto* text :
         {"", "{", "[]", "null", R"({"media": null})", R"({"media": {}})", R"({"media": []})",
          R"({"media": {"track": "General"}})", R"({"media": {"track": [1, null, "x", []]}})",
          R"({"media": {"track": [{}]}} and more)", R"({"media": {"track": {"@type": {}}}})"})
        EXPECT_EQ(MediaInfoJSON::metadata(text), MediaMetadata()) << text;

    const std::string deep(100'000, '[');
    EXPECT_EQ(read(deep + std::string(deep.size(), ']')), MediaMetadata());
    EXPECT_EQ(read(R"({"@type": "video", "Width": ")" + deep + "\"}"), MediaMetadata());
}

TEST(MediaInfoJSON, TakesTracksInEveryShape) {
    const std::string video = R"({"@type": "VIDEO", "FrameRate": )";
    EXPECT_EQ(read(video + "\"25.000\"}").captureFps, 25.0) << "a single object";
    EXPECT_EQ(read("[3, " + video + "25}, " + video + "50}]").captureFps, 25.0) << "the first";
    EXPECT_EQ(read(video + R"([[], " ", "23,976"]})").captureFps, 23.976);
    EXPECT_EQ(
        read(video + R"("25", "extra": {"FrameRate": "50", "Format": "AVC"}})").essence->codec,
        "AVC");
    EXPECT_EQ(read(video + R"("25", "extra": {"FrameRate": "50"}})").captureFps, 25.0);
    EXPECT_EQ(read(video + "true}").captureFps, kNone);
    EXPECT_EQ(MediaInfoJSON::metadata("{\"media\": {\"@ref\": \"\xff.mov\", \"track\": " + video +
                                      "25}}}")
                  .captureFps,
              25.0)
        << "a file's name may be no text";
}

TEST(MediaInfoJSON, ReadsRates) {
    struct Case {
        const char* fields;
        std::optional<double> rate;
    };
    const Case cases[] = {
        {R"("FrameRate": "23.976")", 23.976},
        {R"("FrameRate": "30000/1001")", 30000.0 / 1001},
        {R"("FrameRate": "30000/0")", kNone},
        {R"("FrameRate": "1e300/1e-300")", kNone},
        {R"("FrameRate": "0", "FrameRate_Num": "24000", "FrameRate_Den": "1001")", 24000.0 / 1001},
        {R"("FrameRate_Num": 24000, "FrameRate_Den": 0)", 24000.0},
        {R"("FrameRate_Den": "1001")", kNone},
        {R"("FrameRate": "25 fps")", kNone},
        {R"("FrameRate": "nan")", kNone},
        {R"("FrameRate": "1e999")", kNone},
        {R"("FrameRate": "-25")", kNone},
    };
    for (const auto& [fields, rate] : cases)
        EXPECT_EQ(read("", fields, "").captureFps, rate) << fields;

    // The timecode's own rate, else what the file says, else the picture's.
    const std::string picture = R"("FrameRate": "50")";
    const std::string file = R"("FrameRate": "30")";
    EXPECT_EQ(
        read(R"("TimeCode_Rate": "24", )" + file, picture, R"("FrameRate": "25")").timecodeRate,
        25.0);
    EXPECT_EQ(read(R"("TimeCode_Rate": "30000/1001", )" + file, picture, "").timecodeRate,
              30000.0 / 1001);
    EXPECT_EQ(read(file, picture, "").timecodeRate, 30.0);
    EXPECT_EQ(read("", picture, "").timecodeRate, 50.0);
    EXPECT_EQ(read(file, "", "").captureFps, 30.0);
}

TEST(MediaInfoJSON, ReadsTimecodeAndItsWayOfCounting) {
    struct Case {
        const char *general, *video, *timecode;
        std::optional<std::string> start;
        std::optional<bool> dropFrame;
    };
    const Case cases[] = {
        {"", "", R"("TimeCode_FirstFrame": "01:00:00;00")", "01:00:00:00", true},
        {"", "", R"("TimeCode_FirstFrame": "01:00:00:00")", "01:00:00:00", kNone},
        {"", "", R"("TimeCode_LastFrame": "01:00:00;00")", kNone, true},
        {"", "", R"("TimeCode_DropFrame": "DF")", kNone, true},
        {"", R"("TimeCode_DropFrame": "Yes")", R"("TimeCode_DropFrame": "maybe")", kNone, true},
        {R"("TimeCode_DropFrame": "NDF")", R"("TimeCode_DropFrame": "1")", "", kNone, false},
        {R"("TimeCode_FirstFrame": "02:00:00:00")", R"("TimeCode_FirstFrame": "03:00:00:00")", "",
         "02:00:00:00", kNone},
        {"", R"("TimeCode_FirstFrame": "at 123:04:05:067")", "", "23:04:05:67", kNone},
        {R"("TimeCode_FirstFrame": "none")", R"("TimeCode_FirstFrame": "03:00:00:00")", "", kNone,
         kNone},
        {"", "", R"("TimeCode_FirstFrame": "01:00:00:0")", kNone, kNone},
    };
    for (const auto& [general, video, timecode, start, dropFrame] : cases) {
        const auto facts = read(general, video, timecode);
        EXPECT_EQ(facts.timecodeStart, start) << general << video << timecode;
        EXPECT_EQ(facts.timecodeDropFrame, dropFrame) << general << video << timecode;
    }
    EXPECT_EQ(read(R"([{"@type": "other", "Format": "SMPTE TC", "FrameRate": 24},
                       {"@type": "Audio", "TimeCode_FirstFrame": "04:00:00:00"}])"),
              (MediaMetadata{"04:00:00:00", kNone, kNone, kNone, kNone, 24.0, kNone, kNone}))
        << "a track of any other kind is asked last";
    EXPECT_EQ(read(R"({"@type": "Menu", "Type": "Time code", "FrameRate": 24})").timecodeRate,
              kNone);
}

TEST(MediaInfoJSON, ReadsLengths) {
    struct Case {
        const char* video;
        std::optional<double> seconds;
        std::optional<std::string> durationTC;
    };
    const Case cases[] = {
        {R"("Duration_String3": "00:01:40.040", "Duration": "7")", 100.04, kNone},
        {R"("Duration_String3": "01:40,5", "FrameRate": 25)", 100.5, "00:01:40:12"},
        {R"("Duration_String3": "soon", "Duration": "2.002")", 2.0, kNone},
        {R"("Duration_String3": "40.04", "Duration": "2,006")", 2.01, kNone},
        {R"("Duration_String3": "1:2:3:9")", 3723.0, kNone},
        {R"("Duration": "0")", kNone, kNone},
        {R"("Duration": "1e308")", 1e308, kNone},
        {R"("Duration_String3": "1e308:0:0")", kNone, kNone},
        {R"("Duration_String4": "00:00:02;10")", kNone, "00:00:02:10"},
        {R"("Duration_String4": "2 s", "FrameRate": "25")", kNone, kNone},
    };
    for (const auto& [video, seconds, durationTC] : cases) {
        const auto facts = read("", video, "");
        EXPECT_EQ(facts.durationSeconds, seconds) << video;
        EXPECT_EQ(facts.durationTC, durationTC) << video;
    }
    EXPECT_EQ(read(R"([{"@type": "Audio", "Duration": "9"}])").durationSeconds, 9.0);
    EXPECT_EQ(read(R"("Duration_String4": "00:00:03:00")", "", "").durationTC, "00:00:03:00");
}

TEST(MediaInfoJSON, CountsFramesAndNotRoundedSeconds) {
    struct Case {
        const char *video, *timecode, *durationTC, *end;
        double rate;
    };
    const Case cases[] = {
        // The timecode's rate is a whole number that stands for the slower one.
        {R"("Duration": "600.600", "FrameRate": "23.976", "FrameRate_Num": "24000",
            "FrameRate_Den": "1001", "FrameCount": "14400")",
         R"("FrameRate": "24.000", "FrameRate_Num": "24", "FrameRate_Den": "1")", "00:10:00:00",
         "01:09:59:23", 24000.0 / 1001},
        {R"("Duration": "600.600", "FrameRate": "23.976")", R"("FrameRate": "24")", "00:10:00:00",
         "01:09:59:23", 23.976},
        // Rounded up, the length makes the tool count one frame more.
        {R"("Duration": "1.669", "FrameRate": "59.940", "FrameCount": "100")",
         R"("FrameRate": "59.940", "TimeCode_LastFrame": "01:00:01:40")", "00:00:01:40",
         "01:00:01:39", 59.94},
        {R"("Duration": "1.668", "FrameRate": "59.940")", "", "00:00:01:40", "01:00:01:39", 59.94},
        // Fast pictures under a slow timecode.
        {R"("Duration": "2.02", "FrameRate": "50", "FrameCount": "101")", R"("FrameRate": "25")",
         "00:00:02:01", "01:00:02:00", 25},
        {R"("FrameRate": "25", "FrameCount": "-1", "Duration": "2")", "", "00:00:02:00",
         "01:00:01:24", 25},
    };
    for (const auto& [video, timecode, durationTC, end, rate] : cases) {
        const auto facts = read(R"("TimeCode_FirstFrame": "01:00:00:00")", video, timecode);
        EXPECT_EQ(facts.durationTC, durationTC) << video;
        EXPECT_EQ(facts.timecodeEnd, end) << video;
        EXPECT_EQ(facts.timecodeRate, rate) << video;
    }
}

TEST(MediaInfoJSON, ReadsWhatTheCameraWrote) {
    EXPECT_EQ(cameraFact("CameraModel", "X 35").cameraModel, "X 35");
    EXPECT_EQ(essenceOf(R"("com.arri.camera.look.name": "Night")").lookName, "Night");
    EXPECT_EQ(cameraFact("ShutterAngle", "172,8").shutterDegrees, 172.8);
    EXPECT_EQ(cameraFact("ShutterAngle", "1728").shutterDegrees, 172.8);
    EXPECT_EQ(cameraFact("ShutterAngle", "360.0").shutterDegrees, 360.0);
    EXPECT_EQ(cameraFact("SensorFps", "25000").sensorFps, 25.0);
    EXPECT_EQ(cameraFact("SensorFps", "25").sensorFps, 25.0);
    EXPECT_EQ(cameraFact("ProjectFps", "23,976").projectFps, 23.976);
    EXPECT_EQ(cameraFact("ProjectFps", "0").projectFps, kNone);
    EXPECT_EQ(essenceOf(R"("com.arri.camera.SensorFps": "0")", R"("FrameRate": "50")").sensorFps,
              50.0);
    EXPECT_EQ(essenceOf(R"("Video_Format_List": "AVC")").codec, "AVC");

    const std::map<std::string, std::optional<int>> wholes = {
        {"5600", 5600},        {"+5600.9", 5600}, {"-3", -3},     {"2147483647", 2147483647},
        {"2147483648", kNone}, {"1e30", kNone},   {"warm", kNone}};
    for (const auto& [text, number] : wholes)
        EXPECT_EQ(cameraFact("WhiteBalanceKelvin", text).whiteBalanceK, number) << text;

    const std::string date = R"("com.arri.camera.UserDate": "20260102")";
    const std::string encoded = R"("Encoded_Date": "encoded")";
    EXPECT_EQ(
        essenceOf(date + R"(, "com.arri.camera.UserTime": "030405", )" + encoded).recordedDate,
        "20260102 030405");
    EXPECT_EQ(essenceOf(date + ", " + encoded).recordedDate, "encoded");
    EXPECT_EQ(essenceOf(date).recordedDate, "20260102");
    EXPECT_EQ(essenceOf(R"("Tagged_Date": "tagged", "Recorded_Date": "recorded")").recordedDate,
              "recorded");
}
