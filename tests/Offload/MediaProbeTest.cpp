#include "Offload/MediaProbe.h"

#include "Offload/CopyEngine.h"
#include "Platform/Numbers.h"
#include "Platform/Text.h"
#include "support/Clips.h"
#include "support/MediaTool.h"
#include "support/Offloads.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr auto kNone = std::nullopt;

const MediaInfoCLI::Tool kNoTool{.candidates = {}, .limits = {}, .noted = &MediaInfoCLI::noted()};

/// What the tool says in reply to a template of its own, which has nothing to do with its JSON.
std::string mediainfo(const std::string& question, const std::filesystem::path& file) {
    return Text::trimmed(
        run({"mediainfo", "--Inform=" + question, file.native()}, {{"LC_ALL", "C.UTF-8"}})
            .standardOutput);
}

/// What ffprobe says of the first stream chosen by `streams`, or of the whole file.
std::string ffprobe(const std::string& streams, const std::string& entry,
                    const std::filesystem::path& file) {
    const auto text = run({"ffprobe", "-v", "error", "-select_streams", streams, "-show_entries",
                           entry, "-of", "default=nokey=1:noprint_wrappers=1", file.native()})
                          .standardOutput;
    return text.substr(0, text.find('\n'));
}

double number(const std::string& text) {
    const auto slash = text.find('/');
    if (slash == std::string::npos)
        return Numbers::decimal(text).value();
    return number(text.substr(0, slash)) / number(text.substr(slash + 1));
}

std::optional<std::string> withColons(const std::string& timecode) {
    return timecode.empty() ? kNone : std::optional(Text::replaced(timecode, ";", ":"));
}

struct Clip {
    const char* name;
    const char* rate;
    std::vector<std::string> options;
    /// As the clip was made.
    std::optional<std::string> start;
    std::optional<bool> dropFrame;
};

const std::vector<Clip>& clips() {
    static const std::vector<Clip> all = {
        {"film.mov",
         "24000/1001",
         {"-c:v", "mpeg4", "-timecode", "01:00:00:00"},
         "01:00:00:00",
         false},
        {"tv.MOV",
         "30000/1001",
         {"-c:v", "mpeg4", "-timecode", "10:00:00;00"},
         "10:00:00:00",
         true},
        {"tape.mxf",
         "25",
         {"-c:v", "mpeg2video", "-timecode", "09:59:50:12"},
         "09:59:50:12",
         false},
        {"phone.mp4", "25", {"-c:v", "mpeg4"}, kNone, kNone},
        {"Çekim \xff.mp4", "50", {"-c:v", "mpeg4"}, kNone, kNone},
    };
    return all;
}

/// The take lasts two seconds and began at ten.
std::string broadcastWave() {
    return wavFile({wavFormat(1, 48'000, 16), wavBext(36'000ULL * 48'000), wavIXML("25"),
                    wavChunk("data", bytesOf(2 * 48'000 * 2))});
}

} // namespace

TEST(MediaProbe, SaysWhatTheToolsSayOfRealClips) {
    const TemporaryFolder folder;
    for (const auto& clip : clips()) {
        SCOPED_TRACE(clip.name);
        const auto file = folder / clip.name;
        // The tools do not find what has no text for a name.
        const auto plain = folder / ("clip" + file.extension().native());
        makeVideo(plain, clip.rate, clip.options);
        std::filesystem::copy(plain, file);
        const double seconds = number(ffprobe("v:0", "format=duration", plain));
        const double rate = number(ffprobe("v:0", "stream=avg_frame_rate", plain));

        const auto facts = MediaProbe::probe(file);
        EXPECT_EQ(facts.timecodeStart, clip.start);
        EXPECT_EQ(facts.timecodeStart,
                  withColons(mediainfo("Other;%TimeCode_FirstFrame%\\n", plain).substr(0, 11)));
        EXPECT_EQ(facts.timecodeEnd,
                  withColons(mediainfo("Other;%TimeCode_LastFrame%\\n", plain).substr(0, 11)));
        EXPECT_EQ(facts.timecodeDropFrame, clip.dropFrame);
        EXPECT_NEAR(facts.durationSeconds.value(), seconds, 0.005);
        EXPECT_NEAR(facts.captureFps.value(), rate, 0.001);
        EXPECT_NEAR(facts.timecodeRate.value(), rate, 0.001);
        ASSERT_TRUE(facts.essence);
        EXPECT_EQ(facts.essence->codec, mediainfo("Video;%Format%", plain));
        EXPECT_EQ(facts.essence->width, 160);
        EXPECT_EQ(facts.essence->height, 96);

        // Without the tool, the library knows the numbers, and those exactly.
        const auto numbers = MediaProbe::probe(file, {.tool = kNoTool, .log = {}, .stop = {}});
        EXPECT_DOUBLE_EQ(numbers.captureFps.value(), rate);
        EXPECT_DOUBLE_EQ(numbers.timecodeRate.value(), rate);
        EXPECT_EQ(numbers.durationSeconds, Numbers::rounded(seconds, 2));
        EXPECT_EQ(numbers.durationTC, "00:00:02:00") << "as many frames as were made";
        EXPECT_FALSE(numbers.timecodeStart);
        EXPECT_FALSE(numbers.essence);
    }
}

TEST(MediaProbe, KnowsWhenASoundTakeBegan) {
    const TemporaryFolder folder;
    const auto file = folder / "take.WAV";
    writeFile(file, broadcastWave());
    ASSERT_EQ(ffprobe("a:0", "format_tags=time_reference", file), "1728000000");
    ASSERT_EQ(number(ffprobe("a:0", "format=duration", file)), 2.0);

    for (const auto& tool : {MediaInfoCLI::Tool::usual(), kNoTool}) {
        const auto facts = MediaProbe::probe(file, {.tool = tool, .log = {}, .stop = {}});
        EXPECT_EQ(facts.timecodeStart, "10:00:00:00");
        EXPECT_EQ(facts.timecodeEnd, "10:00:02:00");
        EXPECT_EQ(facts.durationTC, "00:00:02:00");
        EXPECT_EQ(facts.durationSeconds, 2.0);
        EXPECT_EQ(facts.timecodeRate, 25.0);
        EXPECT_FALSE(facts.captureFps);
    }
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

    const auto facts = MediaProbe::probe(take, context);
    EXPECT_EQ(facts.timecodeStart, "01:00:00:00");
    EXPECT_EQ(facts.timecodeRate, 30.0);
    EXPECT_EQ(facts.durationSeconds, 2.0);
    EXPECT_EQ(facts.durationTC, "00:00:02:00");

    // Length and rate come from different sources, and the end from both.
    fake.says(R"(echo '{"media": {"track": [{"@type": "General", "Duration": "2"}, {"@type":)"
              R"( "Video", "TimeCode_FirstFrame": "01:00:00:00"}]}}')");
    makeVideo(folder / "clip.mov", "25", {"-c:v", "mpeg4"});
    const auto clip = MediaProbe::probe(folder / "clip.mov", context);
    EXPECT_EQ(clip.durationTC, "00:00:02:00");
    EXPECT_EQ(clip.timecodeEnd, "01:00:02:00");

    fake.says("echo '{}'");
    writeFile(folder / "clip.r3d", "unknown");
    writeFile(folder / "clip.ari", "unknown");
    EXPECT_EQ(MediaProbe::probe(folder / "clip.r3d", context), MediaMetadata());
    EXPECT_EQ(MediaProbe::probe(folder / "clip.ari", context), MediaMetadata());
    EXPECT_THAT(log, ::testing::ElementsAre("MediaInfo CLI " + fake.path().native(),
                                            "MediaInfo returned no fields for clip.r3d"));
}

TEST(MediaProbe, LooksOnlyIntoWhatIsNamedAMediaFile) {
    const TemporaryFolder folder;
    FakeMediaInfo fake;
    fake.says("touch \"$4.asked\"; echo '{}'");
    for (const auto* name : {"notes.txt", "still.jpg", ".mov", "mov"}) {
        writeFile(folder / name, broadcastWave());
        const auto facts =
            MediaProbe::probe(folder / name, {.tool = fake.tool(), .log = {}, .stop = {}});
        EXPECT_EQ(facts, MediaMetadata()) << name;
        EXPECT_FALSE(std::filesystem::exists((folder / name).native() + ".asked")) << name;
    }
    // A playlist that calls itself a clip leads nowhere.
    makeVideo(folder / "other.mp4", "25", {"-c:v", "mpeg4"});
    for (const auto* list : {"#EXTM3U\n#EXTINF:2,\nother.mp4\n#EXT-X-ENDLIST\n",
                             "ffconcat version 1.0\nfile other.mp4\n"}) {
        writeFile(folder / "list.mov", list);
        EXPECT_EQ(MediaProbe::probe(folder / "list.mov", {.tool = kNoTool, .log = {}, .stop = {}}),
                  MediaMetadata());
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
    for (const auto* script :
         {"sleep 60", "kill -SEGV $$", "echo banner", "head -c 50000000 /dev/zero >&2",
          "head -c 50000000 /dev/urandom", "echo '{\"media\": {\"track\": [{'",
          "yes '{' | head -c 1000000", "rm -f \"$4\"; exit 1"}) {
        SCOPED_TRACE(script);
        fake.says(script);
        request.mediaInfo = fake.tool();
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
}

TEST_F(MediaPassTest, StoppingItKeepsWhatWasProved) {
    fake.says("touch " + (destination / "asked").native() + "; sleep 60");
    request.mediaInfo = fake.tool();
    request.mediaInfo.limits.run = std::chrono::minutes(1);
    std::jthread asker([&] {
        while (!std::filesystem::exists(destination / "asked") && !stop.stop_requested())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        stop.request_stop();
    });
    const auto start = std::chrono::steady_clock::now();
    const auto outcome = run();
    stop.request_stop();
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_THAT(verdicts(outcome), Contains(std::pair("b.mxf", "COPY/verified")));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}
