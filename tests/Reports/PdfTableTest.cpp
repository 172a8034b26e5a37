#include "Reports/PdfReports.h"

#include "Pdf/ShapedText.h"
#include "Platform/AppInfo.h"

#include <gmock/gmock.h>

#include <map>
#include <tuple>

// Where the rows of a report's table stand, and what stands in them.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST_F(PdfReports, PagesTakeTheRowsThatHaveRoom) {
    // clang-format off
    const std::vector<std::tuple<Report, int, std::vector<int>>> cases = {
        {kStandard, 0, {0}}, {kStandard, 1, {1}}, {kStandard, 26, {26}}, {kStandard, 27, {26, 1}},
        {kStandard, 54, {26, 28}}, {kStandard, 55, {26, 28, 1}},
        {kDetailed, 0, {0}}, {kDetailed, 55, {14, 17, 17, 7}},
    };
    // clang-format on
    for (const auto& [report, count, rows] : cases) {
        manifest.files.clear();
        addClips(count);
        const auto file = write(report);
        EXPECT_THAT(rowsByPage(file), rows) << report.name << count;
        EXPECT_THAT(pdfPageSizes(file), Each(std::pair(842.0, 595.0)));
    }
    manifest.files.clear();
    add("a.mov");
    std::string tall = "b";
    for (int line = 0; line < 70; ++line)
        tall += "\nb";
    add("b.mov").media.edit().essence.emplace().codec = tall;
    add("c.mov");
    EXPECT_THAT(rowsByPage(write(kDetailed)), ElementsAre(1, 1, 1)) << "no row is split";
}

TEST(ShapedText, AnEllipsisStandsWhereReadingEnds) {
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"", u"…"}, {u"a1", u"a1…"}, {u"1", u"1…"}, {u"ש1", u"ש1…\u200F"}, {u"ש1a", u"ש1a…"}};
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(ShapedText::withEllipsis(text), shown);
}

TEST_F(PdfReports, DetailedRowsAreAsHighAsTheirLines) {
    using SessionDetailedPDF::Row;
    const auto banner = [](const std::string& location) {
        ClipEssence common;
        if (!location.empty())
            common.location = location;
        return SessionDetailedPDF::flatten({}, common, "A001", kEnglish, 0).front();
    };
    const std::vector<std::tuple<std::size_t, int, double>> facts = {
        {0, 1, 22}, {1, 2, 31}, {140, 2, 31}, {141, 3, 40}, {300, 4, 49}};
    for (const auto& [length, lines, height] : facts) {
        std::string text;
        for (std::size_t character = 0; character < length; ++character)
            text += "ğ";
        EXPECT_EQ(banner(text).lines, lines) << length;
        EXPECT_DOUBLE_EQ(banner(text).height(), height) << length;
    }

    auto& bare = add("clips/bare.mov");
    bare.mtime.reset();
    bare.sourceSHA256.reset();
    add("clips/four.mov").media.edit().essence.emplace().codec = "four\nlines\nof\nfacts";
    const auto rows =
        SessionDetailedPDF::flatten(ReportTree::build(manifest.files), {}, "A001", kTurkish, 0);
    ASSERT_THAT(rows, SizeIs(4));
    EXPECT_TRUE(rows[0].banner);
    EXPECT_EQ(rows[1].clip, "2 dosya");
    EXPECT_EQ(rows[1].status, "2 dosya");
    EXPECT_DOUBLE_EQ(rows[1].height(), 22);
    EXPECT_DOUBLE_EQ(rows[2].height(), 29.6);
    EXPECT_EQ(rows[2].status, "COPY\nverified");
    EXPECT_EQ(rows[2].nameStamp + rows[2].hash + rows[2].clip + rows[2].timing, "");
    EXPECT_DOUBLE_EQ(rows[3].height(), 37.8);
    EXPECT_EQ(rows[3].nameStamp, "2026-03-01 12:30:15");
}

TEST_F(PdfReports, CellsStandWhereTheirColumnsAre) {
    auto& media = add("clip.mov").media.edit();
    media.timecodeStart = "01:00:00:00";
    media.durationTC = "00:00:10:12";
    media.captureFps = media.timecodeRate = 25;
    media.timecodeDropFrame = false;
    media.essence.emplace().codec = "ProRes";
    add("clip2.mov").sourceSHA256.reset();
    using Edges = std::map<std::string, double>;
    const auto address = AppInfo::linkText(AppInfo::websiteURL);
    const Edges standardRight = {{"1,234,567", 214},   {"COPY", 250},        {"verified", 292},
                                 {"01:00:00:00", 400}, {"00:00:10:12", 460}, {"NDF", 528},
                                 {kWideHash, 830},     {address, 832}};
    const Edges detailedLeft = {{"clip.mov", 11},     {"2026-03-01", 11}, {"ProRes", 211},
                                {"01:00:00:00", 329}, {"COPY", 461},      {"verified", 461},
                                {kWideHash, 513}};
    constexpr double kTolerance = 0.3;
    for (const auto& [report, left, right, rowHeight] :
         {std::tuple(kStandard, Edges{{"clip.mov", 12}, {"1,234,567", 187.4}}, standardRight, 18.0),
          std::tuple(kDetailed, detailedLeft, Edges{{"1,234,567", 203}, {address, 833}}, 29.6)}) {
        SCOPED_TRACE(report.name);
        const auto words = pdfWords(write(report));
        const auto first = [words](const std::string& text) {
            return wordsLike(words, text).at(0);
        };
        for (const auto& [text, edge] : left)
            EXPECT_NEAR(first(text).left, edge, kTolerance) << text;
        for (const auto& [text, edge] : right)
            EXPECT_NEAR(first(text).right, edge, kTolerance) << text;
        EXPECT_NEAR(first("clip2.mov").top - first("clip.mov").top, rowHeight, kTolerance);
    }
    // The standard table begins 70 points below the upper edge: its head takes 13, a row 18.
    const auto clip = wordsLike(pdfWords(write(kStandard)), "clip.mov").at(0);
    EXPECT_NEAR((clip.top + clip.bottom) / 2, 70 + 13 + 9, 1.5);
}

TEST_F(PdfReports, TheDetailedBannerTellsOfTheCardOnLinesOfItsOwn) {
    auto& essence = add("clip.mov").media.edit().essence.emplace();
    essence.cameraModel = "ALEXA";
    essence.location.emplace();
    for (int word = 0; word < 50; ++word)
        *essence.location += "Bebek ";
    const auto file = write(kDetailed);
    const auto words = pdfWords(file);
    const auto facts = wordsLike(words, "Bebek");
    ASSERT_THAT(facts, SizeIs(50));
    EXPECT_NEAR(wordsLike(words, "A001").back().left, 9, 0.3);
    EXPECT_NEAR(wordsLike(words, "ALEXA").at(0).left, 9, 0.3);
    EXPECT_NEAR(facts.back().top - facts.front().top, 9, 0.3) << "two lines";
    EXPECT_LT(facts.back().bottom, wordsLike(words, "clip.mov").at(0).top);
    const auto color = pdfPicture(file, 1).pixelColor(830 * kPixelsPerPoint, 112 * kPixelsPerPoint);
    EXPECT_EQ(color.name().toStdString(), "#f5f0ff");
}
