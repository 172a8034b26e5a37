#include "Offload/WavFile.h"

#include "support/Clips.h"
#include "support/Files.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

using namespace slatewise;
using namespace slatewise::test;

namespace {

constexpr auto kNone = std::nullopt;
constexpr std::uint64_t kTenHours = 36'000ULL * 48'000;

long peakMemoryKiB() {
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class WavFileTest : public ::testing::Test {
protected:
    MediaMetadata timingOf(const std::string& content) {
        writeFile(file, content);
        return WavFile::timing(file);
    }

    TemporaryFolder folder;
    const std::filesystem::path file = folder / "take.wav";
    /// Two seconds.
    const std::string format = wavFormat(2, 48'000, 24);
    const std::string data = wavChunk("data", std::string(2 * 48'000 * 6, '\0'));
};

} // namespace

TEST_F(WavFileTest, CountsFromMidnightAtTheRateOfTheSet) {
    const auto facts = timingOf(wavFile({format, wavBext(kTenHours), wavIXML("25"), data}));
    MediaMetadata expected;
    expected.timecodeStart = "10:00:00:00";
    expected.timecodeEnd = "10:00:01:24";
    expected.durationTC = "00:00:02:00";
    expected.durationSeconds = 2.0;
    expected.timecodeRate = 25.0;
    EXPECT_EQ(facts, expected);

    // Chunks may come in any order, have odd sizes, or be of no concern.
    EXPECT_EQ(timingOf(wavFile({wavChunk("JUNK", "odd"), data, wavIXML("25000"), wavBext(kTenHours),
                                wavChunk("cue ", ""), format})),
              expected);
}

TEST_F(WavFileTest, KeepsEveryFrameOfEveryKindOfSet) {
    struct Case {
        const char *rate, *flag;
        std::uint64_t start, samples;
        const char *first, *length, *last;
    };
    const Case cases[] = {
        {"24000/1001", "NDF", 1'729'728'000, 2002 * 100, "10:00:00:00", "00:00:04:04",
         "10:00:04:03"},
        // What begins between two samples is told as the one before.
        {"30000/1001", "NDF", 1601, 161'761, "00:00:00:01", "00:00:03:11", "00:00:03:11"},
        {"29.97", "DF", 1'727'998'272, 96'096, "10:00:00:00", "00:00:02:00", "10:00:01:29"},
        {"30000/1001", "DF", 95'999'904, 96'096, "00:33:20:00", "00:00:02:00", "00:33:21:29"},
        {"25", "NDF", 1919, 1920, "00:00:00:00", "00:00:00:01", "00:00:00:00"},
    };
    for (const auto& [rate, flag, start, samples, first, length, last] : cases) {
        const auto ixml = wavChunk("iXML", std::string("<SPEED><TIMECODE_RATE>") + rate +
                                               "</TIMECODE_RATE><TIMECODE_FLAG>" + flag +
                                               "</TIMECODE_FLAG></SPEED>");
        const auto facts = timingOf(wavFile({wavFormat(1, 48'000, 8), wavBext(start), ixml,
                                             wavChunk("data", std::string(samples, '\0'))}));
        EXPECT_EQ(facts.timecodeStart, first) << rate << " " << flag;
        EXPECT_EQ(facts.durationTC, length) << rate << " " << flag;
        EXPECT_EQ(facts.timecodeEnd, last) << rate << " " << flag;
    }
}

TEST_F(WavFileTest, ReadsFilesWhoseSizesStandInAChunkOfTheirOwn) {
    constexpr std::uint64_t kToldBefore = 0xffff'ffff;
    constexpr std::size_t kBytes = 2 * 48'000 * 6;
    std::string sizes(28, '\0');
    for (int at = 0; at < 8; ++at)
        sizes[8 + static_cast<std::size_t>(at)] = static_cast<char>(kBytes >> (8 * at) & 0xff);
    for (const std::string kind : {"RF64", "BW64"}) {
        const auto content =
            wavFile({wavChunk("ds64", sizes), format, wavBext(kTenHours),
                     wavChunk("data", std::string(kBytes, '\0'), kToldBefore), wavIXML("25")});
        const auto facts = timingOf(kind + content.substr(4));
        EXPECT_EQ(facts.timecodeStart, "10:00:00:00") << kind;
        EXPECT_EQ(facts.timecodeEnd, "10:00:01:24") << kind;
        EXPECT_EQ(facts.durationSeconds, 2.0) << kind;
    }
    // Where that chunk is too short nobody knows.
    const auto cut = wavFile({wavChunk("ds64", sizes.substr(0, 12)), format, wavIXML("25"),
                              wavChunk("data", "", kToldBefore)});
    EXPECT_EQ(timingOf("RF64" + cut.substr(4)).durationSeconds, kNone);
}

TEST_F(WavFileTest, SaysNothingThatItCannotKnow) {
    struct Case {
        const char* what;
        std::string content;
        std::optional<std::string> start;
        std::optional<double> seconds, rate;
    };
    const auto ixml = wavIXML("25");
    const auto bext = wavBext(kTenHours);
    const Case cases[] = {
        {"no rate", wavFile({format, bext, data}), kNone, 2.0, kNone},
        {"no time reference", wavFile({format, ixml, data}), kNone, 2.0, 25.0},
        {"short bext", wavFile({format, wavChunk("bext", std::string(345, '\1')), ixml, data}),
         kNone, 2.0, 25.0},
        {"no data", wavFile({format, bext, ixml}), "10:00:00:00", kNone, 25.0},
        {"short format", wavFile({wavChunk("fmt ", std::string(15, '\1')), bext, ixml, data}),
         kNone, kNone, 25.0},
        {"no samples per second", wavFile({wavFormat(2, 0, 24), bext, ixml, data}), kNone, kNone,
         25.0},
        {"no channels", wavFile({wavFormat(0, 48'000, 24), ixml, data}), kNone, 12.0, 25.0},
        {"a chunk beyond the end", wavFile({format, wavChunk("data", "few", 4'000'000'000), ixml}),
         kNone, kNone, kNone},
        {"all ones", wavFile({wavFormat(65535, 1, 65535), wavBext(~0ULL), ixml, data}), kNone, 0.0,
         25.0},
        {"not RIFF", "RIFX" + wavFile({format, ixml, data}).substr(4), kNone, kNone, kNone},
        {"20 bits in 3 bytes", wavFile({wavFormat(2, 48'000, 20), bext, ixml, data}), "10:00:00:00",
         2.0, 25.0},
        {"44 bytes", wavFile({wavFormat(1, 8000, 8), wavChunk("data", "")}), kNone, kNone, kNone},
        {"45 bytes", wavFile({wavFormat(1, 8000, 8), wavChunk("data", "x", 1)}), kNone, 0.0, kNone},
        {"cut in a header", wavFile({format, ixml}) + "dat", kNone, kNone, 25.0},
    };
    for (const auto& [what, content, start, seconds, rate] : cases) {
        const auto facts = timingOf(content);
        EXPECT_EQ(facts.timecodeStart, start) << what;
        EXPECT_EQ(facts.durationSeconds, seconds) << what;
        EXPECT_EQ(facts.timecodeRate, rate) << what;
    }
}

TEST_F(WavFileTest, IsNotConfusedByWhatIsNoFile) {
    EXPECT_EQ(WavFile::timing(folder / "none.wav"), MediaMetadata());
    EXPECT_EQ(WavFile::timing(folder.path()), MediaMetadata());
    ASSERT_EQ(::mkfifo((folder / "fifo.wav").c_str(), 0600), 0);
    EXPECT_EQ(WavFile::timing(folder / "fifo.wav"), MediaMetadata());
}

TEST_F(WavFileTest, ReadsLittleOfWhatIsLarge) {
    constexpr std::uint64_t kDataBytes = 0xfffffff0;
    constexpr std::uint64_t kHugeText = 0xf0000000;
    const auto head = wavFile({format, wavIXML("24")}) + wavChunk("data", "", kDataBytes);
    const auto tail = wavBext(48'000) + wavChunk("iXML", "<TIMECODE_FLAG>DF", kHugeText);
    writeFile(file, head);
    std::filesystem::resize_file(file, head.size() + kDataBytes);
    std::ofstream(file, std::ios::app) << tail;
    std::filesystem::resize_file(file, std::filesystem::file_size(file) + kHugeText);

    const auto before = peakMemoryKiB();
    const auto facts = WavFile::timing(file);
    EXPECT_LT(peakMemoryKiB() - before, 32 * 1024);
    EXPECT_EQ(facts.timecodeStart, "00:00:01:00");
    EXPECT_EQ(facts.durationSeconds, 14913.08) << "4,294,967,280 bytes at 288,000 a second";
    EXPECT_EQ(facts.timecodeDropFrame, true);
}

TEST(WavFile, ReadsRateAndFlagFromText) {
    struct Case {
        const char* text;
        std::optional<double> rate;
        std::optional<bool> dropFrame;
    };
    const Case cases[] = {
        {"<timecode_rate> 29.97 </Timecode_Rate>", 29.97, kNone},
        {"<TIMECODE_RATE>23976</TIMECODE_RATE>", 23.976, kNone},
        {"<TIMECODE_RATE>1000</TIMECODE_RATE>", 1000.0, kNone},
        {"<TIMECODE_RATE>24000/1001</TIMECODE_RATE>", 24000 / 1001.0, kNone},
        {"<TIMECODE_RATE> 30000/1001 </TIMECODE_RATE>", 30000 / 1001.0, kNone},
        {"<TIMECODE_RATE>25/1</TIMECODE_RATE>", 25.0, kNone},
        {"<TIMECODE_RATE>25/0</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>-25/1</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>/1001</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>24000/</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>25/1/1</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>1e300/1e-300</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>25", kNone, kNone},
        {"<TIMECODE_RATE>0</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE>fast</TIMECODE_RATE>", kNone, kNone},
        {"<TIMECODE_RATE></TIMECODE_RATE>\xff", kNone, kNone},
        {"<timecode_flag>DF</timecode_flag>", kNone, true},
        {"<TIMECODE_FLAG>NDF</TIMECODE_FLAG>", kNone, false},
        {"<TIMECODE_FLAG>NDF <TIMECODE_FLAG>DF", kNone, false},
        {"<SPEED>DF drop", kNone, true},
        {"dropframe: ndf", kNone, true},
        {"drop, df", kNone, false},
        {"dropped", kNone, kNone},
    };
    for (const auto& [text, rate, dropFrame] : cases) {
        const auto speed = WavFile::speedIn(text);
        EXPECT_EQ(speed.timecodeRate, rate) << text;
        EXPECT_EQ(speed.dropFrame, dropFrame) << text;
    }
}
