#include "Offload/MediaProbe.h"

#include "Offload/CopyEngine.h"
#include "Platform/Text.h"
#include "support/Clips.h"
#include "support/MediaTool.h"
#include "support/Offloads.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto kNone = std::nullopt;

/// All of it is waited out.
constexpr std::chrono::milliseconds kForWhatHangs{300};

const MediaInfoCLI::Tool kNoTool{.candidates = {}, .limits = {}, .noted = &MediaInfoCLI::noted()};

/// What ffprobe says of the first stream chosen by `streams`, or of the whole file.
std::string ffprobe(const std::string& streams, const std::string& entry,
                    const std::filesystem::path& file) {
    const auto text = run({"ffprobe", "-v", "error", "-select_streams", streams, "-show_entries",
                           entry, "-of", "default=nokey=1:noprint_wrappers=1", file.native()})
                          .standardOutput;
    return text.substr(0, text.find('\n'));
}

/// What is told of timing: "start - end, length, seconds at capture/timecode rate, counting".
std::string told(const MediaMetadata& facts) {
    const auto text = [](const std::optional<std::string>& value) {
        return value.value_or("none");
    };
    const auto rate = [](const std::optional<double>& value) {
        return value ? fmt::format("{:.4f}", *value) : "none";
    };
    const auto* counting = facts.timecodeDropFrame.value_or(false) ? "DF" : "NDF";
    return fmt::format("{} - {}, {}, {} s at {}/{}, {}", text(facts.timecodeStart),
                       text(facts.timecodeEnd), text(facts.durationTC),
                       facts.durationSeconds.value_or(-1), rate(facts.captureFps),
                       rate(facts.timecodeRate), facts.timecodeDropFrame ? counting : "none");
}

MediaMetadata probe(const std::filesystem::path& file, const MediaProbe::Context& context = {}) {
    return MediaProbe::probe({RootFolder(file.parent_path()), file.filename()}, context);
}

MediaProbe::Context contextWith(const MediaInfoCLI::Tool& tool) {
    return {.tool = tool, .log = {}, .stop = {}};
}

/// The same pictures in every container.
void makeClips(const std::filesystem::path& folder, const std::string& rate, int frames,
               const std::string& start) {
    std::vector<std::string> words = {
        "ffmpeg",   "-v",     "error", "-y", "-f", "lavfi", "-i", "color=size=32x32:rate=" + rate,
        "-pix_fmt", "yuv420p"};
    for (const auto* name : {"clip.mov", "clip.mp4", "clip.mxf"})
        words.insert(words.end(), {"-frames:v", std::to_string(frames), "-c:v", "libx264",
                                   "-preset", "ultrafast", "-timecode", start, folder / name});
    const auto result = run(words);
    if (result.exitCode != 0)
        throw std::runtime_error(result.standardError);
}

/// Has the timecode count every second picture from now on, as some cameras do. It begins later.
void halveTimecode(const std::filesystem::path& file) {
    using namespace std::string_literals;
    const auto mxf =
        Text::replaced(readFile(file), "\x15\x02\0\x02\0\x3c"s, "\x15\x02\0\x02\0\x1e"s);
    writeFile(file, Text::replaced(mxf, "\xea\x60\0\0\x03\xe9\x3c"s, "\x75\x30\0\0\x03\xe9\x1e"s));
}

/// The take lasts two seconds and began at ten.
std::string broadcastWave() {
    return wavFile({wavFormat(1, 48'000, 16), wavBext(36'000ULL * 48'000), wavIXML("25"),
                    wavChunk("data", bytesOf(2 * 48'000 * 2))});
}

} // namespace

TEST(MediaProbe, CountsTheFramesThatAClipWasMadeOf) {
    struct Case {
        const char *rate, *start;
        int frames;
        const char* told;
    };
    // clang-format off
    const Case cases[] = {
        {"24000/1001", "01:00:59:00", 1101, "01:00:59:00 - 01:01:44:20, 00:00:45:21, 45.92 s at 23.9760/23.9760, NDF"},
        {"24", "01:00:59:00", 101, "01:00:59:00 - 01:01:03:04, 00:00:04:05, 4.21 s at 24.0000/24.0000, NDF"},
        {"25", "01:00:59:00", 101, "01:00:59:00 - 01:01:03:00, 00:00:04:01, 4.04 s at 25.0000/25.0000, NDF"},
        {"30000/1001", "01:00:59;00", 101, "01:00:59:00 - 01:01:02:12, 00:00:03:11, 3.37 s at 29.9700/29.9700, DF"},
        {"30000/1001", "01:00:59:00", 101, "01:00:59:00 - 01:01:02:10, 00:00:03:11, 3.37 s at 29.9700/29.9700, NDF"},
        {"48000/1001", "01:00:59:00", 101, "01:00:59:00 - 01:01:01:04, 00:00:02:05, 2.11 s at 47.9520/47.9520, NDF"},
        {"50", "01:00:59:00", 101, "01:00:59:00 - 01:01:01:00, 00:00:02:01, 2.02 s at 50.0000/50.0000, NDF"},
        {"60000/1001", "01:00:59;00", 101, "01:00:59:00 - 01:01:00:44, 00:00:01:41, 1.69 s at 59.9401/59.9401, DF"},
        {"60000/1001", "01:00:59:00", 101, "01:00:59:00 - 01:01:00:40, 00:00:01:41, 1.69 s at 59.9401/59.9401, NDF"},
        {"120", "01:00:59:057", 101, "01:00:59:57 - 01:01:00:37, 00:00:00:101, 0.84 s at 120.0000/120.0000, NDF"},
    };
    // clang-format on
    const TemporaryFolder folder;
    for (const auto& [rate, start, frames, expected] : cases) {
        makeClips(folder.path(), rate, frames, start);
        for (const auto* name : {"clip.mov", "clip.mp4", "clip.mxf"}) {
            // Told as a .mov tells it: one rate is enough, dropping numbers and not.
            if (name == std::string("clip.mp4") && rate != std::string("60000/1001"))
                continue;
            const auto withTool = probe(folder / name);
            EXPECT_EQ(told(withTool), expected) << name;
            EXPECT_EQ(told(probe(folder / name, contextWith(kNoTool))), expected)
                << name << " without the tool";
            ASSERT_TRUE(withTool.essence);
            EXPECT_EQ(withTool.essence->codec, "AVC");
            EXPECT_EQ(withTool.essence->width, 32);
        }
    }
}

TEST(MediaProbe, KnowsClipsOfOtherMakes) {
    const TemporaryFolder folder;
    // A container whose headers do not tell how often its pictures come, and one without timecode.
    makeVideo(folder / "master.mxf", "25", {"-c:v", "prores", "-pix_fmt", "yuv422p10le"});
    makeVideo(folder / "phone.mp4", "25", {"-c:v", "mpeg4"});
    std::filesystem::rename(folder / "phone.mp4", folder / "Çekim \xff.mp4");
    // Sound that goes on when the pictures have ended, and pictures that an editor has hidden.
    makeVideo(folder / "sound.mov", "25",
              {"-filter_complex", "sine=duration=3[sound]", "-map", "0:v", "-map", "[sound]",
               "-c:v", "mpeg4"});
    run({"ffmpeg", "-v", "error", "-ss", "0.8", "-i", folder / "Çekim \xff.mp4", "-c", "copy",
         folder / "cut.mp4"});
    makeClips(folder.path(), "60000/1001", 100, "02:00:00:00");
    const auto clips = {"clip.mov", "clip.mp4", "clip.mxf"};
    for (const auto* name : clips)
        halveTimecode(folder / name);
    for (const auto& tool : {MediaInfoCLI::Tool::usual(), kNoTool}) {
        EXPECT_EQ(told(probe(folder / "sound.mov", contextWith(tool))),
                  "none - none, 00:00:02:00, 2 s at 25.0000/25.0000, none");
        EXPECT_EQ(told(probe(folder / "cut.mp4", contextWith(tool))),
                  "none - none, 00:00:01:05, 1.2 s at 25.0000/25.0000, none");
        for (const auto* name : clips)
            EXPECT_EQ(told(probe(folder / name, contextWith(tool))),
                      "04:00:00:00 - 04:00:01:19, 00:00:01:20, 1.67 s at 59.9401/29.9700, NDF")
                << name;
        EXPECT_EQ(told(probe(folder / "master.mxf", contextWith(tool))),
                  "00:00:00:00 - 00:00:01:24, 00:00:02:00, 2 s at 25.0000/25.0000, NDF");
        EXPECT_EQ(told(probe(folder / "Çekim \xff.mp4", contextWith(tool))),
                  "none - none, 00:00:02:00, 2 s at 25.0000/25.0000, none");
    }
}

TEST(MediaProbe, KnowsWhenASoundTakeBegan) {
    const TemporaryFolder folder;
    const auto file = folder / "take.WAV";
    writeFile(file, broadcastWave());
    ASSERT_EQ(ffprobe("a:0", "format_tags=time_reference", file), "1728000000");
    for (const auto& tool : {MediaInfoCLI::Tool::usual(), kNoTool})
        EXPECT_EQ(told(probe(file, contextWith(tool))),
                  "10:00:00:00 - 10:00:01:24, 00:00:02:00, 2 s at none/25.0000, none");
}

TEST(MediaProbe, LaterSourcesOnlyFillGaps) {
    const TemporaryFolder folder;
    const auto take = folder / "take.wav";
    writeFile(take, broadcastWave());
    FakeMediaInfo fake;
    fake.says(R"(echo '{"media": {"track": {"@type": "Other", "Type": "Time code",)"
              R"( "TimeCode_FirstFrame": "01:00:00:00", "FrameRate": 30}}}')");
    std::vector<std::string> log;
    const MediaProbe::Context context{.tool = fake.tool(),
                                      .log = [&](const std::string& line) { log.push_back(line); },
                                      .stop = {}};

    const auto facts = probe(take, context);
    EXPECT_EQ(facts.timecodeStart, "01:00:00:00");
    EXPECT_EQ(facts.timecodeRate, 30.0);
    EXPECT_EQ(facts.durationSeconds, 2.0);
    EXPECT_EQ(facts.durationTC, "00:00:02:00");
    EXPECT_EQ(facts.timecodeEnd, "01:00:01:29") << "not the end of another count";

    // Length and rate come from different sources, and the end from both.
    fake.says(R"(echo '{"media": {"track": [{"@type": "General", "Duration": "2"}, {"@type":)"
              R"( "Video", "TimeCode_FirstFrame": "01:00:00:00"}]}}')");
    makeVideo(folder / "clip.mov", "25", {"-c:v", "mpeg4"});
    const auto clip = probe(folder / "clip.mov", context);
    EXPECT_EQ(clip.durationTC, "00:00:02:00");
    EXPECT_EQ(clip.timecodeEnd, "01:00:01:24");

    // A folder by a clip's name is no clip, whatever a tool says of it.
    std::filesystem::create_directory(folder / "A001.mov");
    EXPECT_EQ(probe(folder / "A001.mov", context), MediaMetadata());
    EXPECT_THAT(log.back(), StartsWith("Media probe failed for A001.mov: "));
    log.pop_back();

    // Without the tool, of a container that rounds the rate of its timecode.
    const auto reader = folder / "reader";
    writeFile(reader, "#!/bin/sh\necho rate 24000/1001; echo timecode-rate 24/1; echo frames 14400;"
                      "echo timecode 01:00:00:00\n");
    std::filesystem::permissions(reader, std::filesystem::perms::owner_all);
    const auto rounded =
        probe(folder / "clip.mov",
              {.tool = {}, .reader = {.executable = reader, .limits = {}}, .log = {}, .stop = {}});
    EXPECT_EQ(rounded.timecodeRate, rounded.captureFps);
    EXPECT_EQ(rounded.timecodeEnd, "01:09:59:23");

    fake.says("echo '{}'");
    writeFile(folder / "clip.r3d", "unknown");
    writeFile(folder / "clip.ari", "unknown");
    EXPECT_EQ(probe(folder / "clip.r3d", context), MediaMetadata());
    EXPECT_EQ(probe(folder / "clip.ari", context), MediaMetadata());
    EXPECT_THAT(log, ::testing::ElementsAre("MediaInfo CLI " + fake.path().native(),
                                            "MediaInfo returned no fields for clip.r3d"));
}

TEST(MediaProbe, LooksOnlyIntoWhatIsNamedAMediaFile) {
    const TemporaryFolder folder;
    FakeMediaInfo fake;
    fake.says("touch " + (folder / "asked").native() + "; echo '{}'");
    for (const auto* name : {"notes.txt", "still.jpg", ".mov", "mov"}) {
        writeFile(folder / name, broadcastWave());
        const auto facts = probe(folder / name, contextWith(fake.tool()));
        EXPECT_EQ(facts, MediaMetadata()) << name;
        EXPECT_FALSE(std::filesystem::exists(folder / "asked")) << name;
    }
    // A playlist that calls itself a clip leads nowhere.
    makeVideo(folder / "other.mp4", "25", {"-c:v", "mpeg4"});
    for (const auto* list : {"#EXTM3U\n#EXTINF:2,\nother.mp4\n#EXT-X-ENDLIST\n",
                             "ffconcat version 1.0\nfile other.mp4\n"}) {
        writeFile(folder / "list.mov", list);
        EXPECT_EQ(probe(folder / "list.mov", contextWith(kNoTool)), MediaMetadata());
    }
}

namespace {

/// A card with one good clip, and one run of it with a tool of the test's choice.
class MediaPassTest : public ::testing::Test {
protected:
    MediaPassTest() {
        makeVideo(card / "a.mov", "25", {"-c:v", "mpeg4", "-timecode", "01:00:00:00"});
        writeFile(card / "b.mxf", "no clip at all");
        writeFile(card / "notes.txt", "not asked about");
        writeFile(card / "._c.mov", "skipped");
    }

    OffloadOutcome run() { return CopyEngine::run(request, record.observer(), stop.get_token()); }

    TemporaryFolder card;
    TemporaryFolder destination;
    FakeMediaInfo fake;
    CopyEngine::Request request = requestFor(card.path(), destination.path());
    RunRecord record;
    std::stop_source stop;
};

} // namespace

TEST_F(MediaPassTest, FillsTheRowsOfCopiedAndOfHashedFiles) {
    for (const bool verifyOnly : {false, true}) {
        request.settings.verifyOnly = verifyOnly;
        const auto outcome = run();
        EXPECT_EQ(outcome.status, verifyOnly ? OutcomeStatus::Hashed : OutcomeStatus::Verified);
        for (const auto& row : outcome.files) {
            const bool isClip = row.relativePath == "a.mov";
            EXPECT_EQ(row.media->timecodeStart, isClip ? std::optional("01:00:00:00") : kNone)
                << row.relativePath;
            EXPECT_EQ(row.media->captureFps.has_value(), isClip) << row.relativePath;
            EXPECT_EQ(row.media->essence.has_value(), isClip) << row.relativePath;
        }
    }
}

TEST_F(MediaPassTest, NoToolCanChangeTheVerdict) {
    // What becomes of its other answers is a matter of reading them.
    for (const auto* script : {"sleep 60", "kill -SEGV $$", "head -c 50000000 /dev/urandom"}) {
        SCOPED_TRACE(script);
        fake.says(script);
        request.mediaInfo = fake.tool();
        if (script == std::string("sleep 60"))
            request.mediaInfo.limits.run = kForWhatHangs;
        const auto outcome = run();
        EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
        EXPECT_THAT(verdicts(outcome), Contains(std::pair("a.mov", "COPY/verified")));
        EXPECT_THAT(verdicts(outcome), Contains(std::pair("b.mxf", "COPY/verified")));
        EXPECT_THAT(record.problems, ::testing::IsEmpty());
    }
    request.mediaInfo = kNoTool;
    const auto outcome = run();
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_EQ(outcome.files.front().media->captureFps, 25.0) << "the library knows";

    fake.says("rm -f \"$(readlink \"$4\")\"; exit 1");
    request.mediaInfo = fake.tool();
    EXPECT_EQ(run().status, OutcomeStatus::Failed) << "unless it takes the copy away";
}

TEST_F(MediaPassTest, TellsNothingOfAFileThatCameInBetween) {
    const TemporaryFolder elsewhere;
    makeVideo(elsewhere / "foreign.mov", "25", {"-c:v", "mpeg4", "-timecode", "02:00:00:00"});
    std::filesystem::rename(card / "b.mxf", card / "0.mxf");
    // The tool is asked about the first clip while somebody swaps the second.
    fake.says("ln -sf " + (elsewhere / "foreign.mov").native() + " " +
              (destination / "session/a.mov").native() + "; echo '{}'");
    request.mediaInfo = fake.tool();
    const auto outcome = run();
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    for (const auto& row : outcome.files)
        EXPECT_EQ(*row.media, MediaMetadata()) << row.relativePath;
}

TEST_F(MediaPassTest, StoppingItKeepsWhatWasProved) {
    fake.says("touch " + (destination / "asked").native() + "; sleep 60");
    request.mediaInfo = fake.tool();
    request.mediaInfo.limits.run = std::chrono::minutes(1);
    std::jthread asker([&] {
        EXPECT_TRUE(waitForFile(destination / "asked")) << "the tool is asked";
        stop.request_stop();
    });
    const auto start = std::chrono::steady_clock::now();
    const auto outcome = run();
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_THAT(verdicts(outcome), Contains(std::pair("b.mxf", "COPY/verified")));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(ClipReader, WhatAProgramBreaksOnCostsItsFactsAlone) {
    struct Case {
        const char* script;
        MediaTiming timing;
        const char* log;
        std::chrono::milliseconds limit = std::chrono::seconds(3);
    };
    const std::vector<Case> cases = {
        {"echo 'duration 2.5'; echo 'rate 24000/1001'; echo 'frames 60'; echo 'timecode "
         "01:00:00;00'",
         {.durationSeconds = 2.5,
          .frameRate = FrameRate::of(24'000, 1001),
          .frameCount = 60,
          .timecodeRate = {},
          .timecode = "01:00:00;00"},
         nullptr},
        {"printf 'duration nan\\nduration\\nrate 1/0\\nframes -3\\nframes 9e9\\nrates 1/1\\nx'",
         {},
         nullptr},
        {"kill -SEGV $$", {}, "Clip reader ended with 11: clip.mov"},
        {"sleep 30", {}, "Clip reader timed out: clip.mov", kForWhatHangs},
    };
    const TemporaryFolder folder;
    for (const auto& [script, timing, log, limit] : cases) {
        SCOPED_TRACE(script);
        writeFile(folder / "reader", std::string("#!/bin/sh\n") + script + "\n");
        std::filesystem::permissions(folder / "reader", std::filesystem::perms::owner_all);
        auto program = ClipReader::Program::usual();
        EXPECT_TRUE(program.executable) << "built with this test, in a folder that is ours alone";
        program.executable = folder / "reader";
        program.limits.run = limit;
        std::vector<std::string> lines;
        EXPECT_EQ(ClipReader::timing({"/card/clip.mov", "clip.mov"}, program,
                                     [&](const auto& line) { lines.push_back(line); }),
                  timing);
        if (log)
            EXPECT_THAT(lines, ::testing::ElementsAre(log));
        else
            EXPECT_THAT(lines, ::testing::IsEmpty());
    }
    std::vector<std::string> lines;
    for (int clip = 0; clip < 2; ++clip)
        EXPECT_EQ(ClipReader::timing({"/card/clip.mov", "clip.mov"},
                                     {.executable = {}, .limits = {}},
                                     [&](const auto& line) { lines.push_back(line); }),
                  MediaTiming());
    EXPECT_THAT(lines, ::testing::SizeIs(1));
}
