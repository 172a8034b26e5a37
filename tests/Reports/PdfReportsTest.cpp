#include "Reports/PdfReports.h"

#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "support/MountedVolume.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <set>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

class EachPdfReport : public PdfReports, public ::testing::WithParamInterface<Report> {};

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& failure) {
        return failure.localizedDescription();
    }
    return "";
}

} // namespace

TEST_F(PdfReports, SpeakBothLanguages) {
    const std::string name = "Ünlü Çekim ığşİĞŞöç.mov";
    add("Gündüz/" + name);
    addClips(60);
    manifest.counts = {.folders = 1, .bytesCopied = 1'234'567};
    for (const auto& report : {kStandard, kDetailed}) {
        const auto turkish = pdfText(write(report, kTurkish));
        for (const auto* text :
             {"Slatewise DIT raporu", "Slatewise DIT raporu (devam)", "1 Mar 2026",
              "Oturum 0f8fad5b", "1 klasör", "61 dosya", "DOĞRULANDI", "2/",
              "1,2 MB (1.234.567 bayt)", "Boyut", "Doğrulama", "Gündüz", name.c_str(),
              "/media/A001", "/media/SSD/2026-03-01/A001", kVersion.c_str()})
            EXPECT_THAT(turkish, HasSubstr(text)) << report.name;
        const auto english = pdfText(write(report, kEnglish));
        for (const auto* text : {"Slatewise DIT report (continued)", "Mar 1, 2026", "1 folders",
                                 "61 files", "(1,234,567 bytes)", "Verify"})
            EXPECT_THAT(english, HasSubstr(text)) << report.name;
    }
}

TEST_P(EachPdfReport, BeginWithTheVerdictAndItsProblems) {
    addClips(1);
    manifest.card.camera = "CamA";
    auto& row = manifest.files.front();
    const std::tuple<OutcomeStatus, VerifyStatus, const char*, const char*> verdicts[] = {
        {OutcomeStatus::Verified, VerifyStatus::Verified, "VERIFIED", "#17703b"},
        {OutcomeStatus::Hashed, VerifyStatus::Hashed, "HASHED", "#175cd4"},
        {OutcomeStatus::Failed, VerifyStatus::Failed, "FAILED", "#b52417"},
    };
    for (const auto& [status, fateOf, word, color] : verdicts) {
        const bool isRed = status == OutcomeStatus::Failed;
        manifest.status = status;
        row.verifyStatus = fateOf;
        manifest.notes = {"first problem", "second problem"};
        manifest.problems.clear();
        if (isRed)
            std::swap(manifest.notes.back(), manifest.problems.emplace_back());
        std::erase(manifest.notes, "");
        const auto file = write(GetParam());
        const auto words = pdfWords(file);
        EXPECT_LE(wordsLike(words, word).at(0).bottom, 25) << word;
        EXPECT_EQ(pdfRedArea(file, 1).pixels > 10'000, isRed) << word;
        const auto bar =
            pdfPicture(file, 1).pixelColor(426 * kPixelsPerPoint, 14 * kPixelsPerPoint);
        EXPECT_EQ(bar.name().toStdString(), color) << word;
        // The word of the row has the colour, too, thin as its lines are.
        const auto fate = wordsLike(words, std::string(rawValue(row.verifyStatus))).back();
        EXPECT_NEAR(pdfStrongestColor(file, fate).hsvHueF(), bar.hsvHueF(), 0.05) << word;
        if (isRed) {
            const auto action = wordsLike(words, "COPY").back();
            EXPECT_NEAR(pdfStrongestColor(file, action).hsvHueF(), bar.hsvHueF(), 0.05);
        }
        EXPECT_EQ(wordsLike(words, "CamA").size(), 1U);
        EXPECT_EQ(wordsLike(words, "problem").size(), 2U) << "all of them, when there is room";
        EXPECT_EQ(pdfPageSizes(file).size(), 1U);
        manifest.notes.resize(isRed ? 4 : 5, "further");
        manifest.notes.back() = "folder/" + std::string(300, 'x') + " omega";
        manifest.card.name = std::string(200, 'W');
        const auto longer = write(GetParam());
        manifest.card.name = "A001";
        EXPECT_THAT(rowsByPage(longer), ElementsAre(1, 0));
        const auto all = pdfWords(longer);
        EXPECT_THAT(pdfText(longer),
                    AllOf(HasSubstr("and 4 more; all from page 2"), HasSubstr("2/2")));
        EXPECT_EQ(wordsLike(all, "problem").size(), 3U) << "one in the head, all behind the table";
        EXPECT_EQ(wordsLike(all, "further").size(), 2U);
        EXPECT_EQ(wordsLike(all, "omega").size(), 1U) << "to its end";
        EXPECT_EQ(std::count_if(all.begin(), all.end(),
                                [](const auto& each) { return each.text.ends_with("PM"); }),
                  3)
            << "no name takes the room of start and end";
        manifest.notes.assign(200, "one of many");
        EXPECT_GE(rowsByPage(write(GetParam())).size(), 5U);
    }
    // Whatever the head has not in full, it says where that is.
    addClips(59);
    manifest.notes.clear();
    const auto tablePages = GetParam().rateColumn == kStandard.rateColumn ? 3 : 4;
    for (const auto& [problems, hint] :
         {std::pair(std::vector{std::string(900, 'x')}, "in full on page {}"),
          std::pair(std::vector{std::string("short"), std::string(300, 'x')},
                    "and 1 more; all from page {}")}) {
        manifest.problems = problems;
        EXPECT_THAT(pdfText(write(GetParam())),
                    HasSubstr(fmt::format(fmt::runtime(hint), tablePages + 1)));
    }
}

TEST_P(EachPdfReport, PathsKeepTheirOrderWhateverWayTheirNamesRun) {
    manifest.problems = {"Copying stopped at فيديو/مقطع/omega"};
    int seen = 0;
    for (const auto& word : pdfWords(write(GetParam()))) {
        if (!word.text.ends_with("/omega"))
            continue;
        ++seen;
        // Whichever way the letters of a part are told, one of each stands in no other.
        EXPECT_LT(word.text.find("ي"), word.text.find("ق")) << word.text;
    }
    EXPECT_EQ(seen, 1);
}

TEST_P(EachPdfReport, AMismatchIsRedInItsOwnCellOnly) {
    add("a.mov").media.edit().captureFps = 24;
    manifest.files.back().media.edit().timecodeRate = 23.976;
    auto file = write(GetParam());
    EXPECT_EQ(pdfRedArea(file, 1).pixels, 0) << "within the tolerance";

    add("b.mov").media.edit().captureFps = 25;
    manifest.files.back().media.edit().timecodeRate = 24;
    add("c.mov");
    file = write(GetParam());
    const auto red = pdfRedArea(file, 1);
    const auto words = pdfWords(file);
    EXPECT_THAT(red.pixels, Ge(20));
    EXPECT_THAT(red.box.left(), Ge(GetParam().edges[GetParam().rateColumn]));
    EXPECT_THAT(red.box.right(), Le(GetParam().edges[GetParam().rateColumn + 1]));
    EXPECT_THAT(red.box.top(), Ge(wordsLike(words, "a.mov").at(0).bottom));
    EXPECT_THAT(red.box.bottom(), Le(wordsLike(words, "c.mov").at(0).top));
}

TEST_P(EachPdfReport, KeepEveryTextInItsCell) {
    std::string deep;
    for (int level = 0; level < 30; ++level)
        deep += "level/";
    for (const auto& name : {std::string(250, 'W'), deep + std::string(250, 'm'),
                             std::string("日本語の長い名前") + std::string(90, 'x'),
                             std::string("مقطع_فيديو_طويل_جدا_مع_كلمات_كثيرة_حتى_يتم_قطع_الاسم"),
                             deep + "名前名前名前名前名前"})
        add(name);
    auto& values = add("values.mov");
    values.verifyStatus = VerifyStatus::CopiedUnverified;
    values.media.edit().captureFps = 119.88;
    values.media.edit().timecodeRate = 23.976;
    values.media.edit().timecodeDropFrame = false;
    values.media.edit().timecodeStart = "123:00:00:00";
    values.media.edit().timecodeEnd = "123:00:10:00";
    values.media.edit().essence.emplace().codec = std::string(80, 'c');
    manifest.card.mountPoint = "/" + std::string(300, 'a');
    manifest.destination.sessionRoot = "/" + std::string(300, 'b');

    const std::set<std::string> foot = {"Slatewise",
                                        "DIT",
                                        "v" + std::string(AppInfo::version),
                                        "·",
                                        "Reports_Detailed",
                                        AppInfo::linkText(AppInfo::websiteURL)};
    const auto& edges = GetParam().edges;
    for (const auto language : {kEnglish, kTurkish}) {
        int cutNames = 0;
        int wholeFates = 0;
        int rates = 0;
        for (const auto& word : pdfWords(write(GetParam(), language))) {
            const double tableTop = word.page == 1 ? 95 : 35;
            const bool isInTable = word.top > tableTop;
            const bool isInRow = isInTable && !foot.contains(word.text);
            const auto edge = std::upper_bound(edges.begin(), edges.end(), word.left);
            ASSERT_TRUE(edge != edges.begin() && edge != edges.end()) << word.text;
            wholeFates += word.text == "copied_unverified" || word.text == "unverified" ? 1 : 0;
            rates += word.text.ends_with(language == kTurkish ? "23,976" : "23.976") ? 1 : 0;
            EXPECT_LE(word.right, isInRow ? *edge - 3.5 : edges.back()) << word.text;
            if (edge == edges.begin() + 1 && isInRow)
                cutNames += word.text.find("…") == std::string::npos ? 0 : 1;
        }
        EXPECT_EQ(wholeFates, 1) << "a fate is never cut";
        EXPECT_EQ(rates, 1) << "with the decimal mark of the language";
        EXPECT_EQ(cutNames, 5) << "at every depth and in every script";
    }
}

TEST_P(EachPdfReport, ShowNamesInAnyScriptAndSignsInPlaceOfWhatCannotBeSeen) {
    std::vector<std::string> names = {"東京_第一场", "한국어", "Привет", "Ελληνικά",
                                      "مقطع",        "שלום",   "ไฟล์",    "🎬📽",
                                      "“x”–→×°(\\)", "ﬁn",     "Ǆ₺€"};
    for (const auto& name : names)
        add(name);
    for (const auto* name :
         {"bad\xff.mov", "rlo\u202Egnp.exe", "tab\there\r.mov", "line\nfeed.mov"})
        add(name);
    for (const auto* shown :
         {"bad\uFFFD.mov", "rlo\uFFFDgnp.exe", "tab‹HT›here‹CR›.mov", "line‹LF›feed.mov"})
        names.emplace_back(shown);
    const auto file = write(GetParam());
    const auto text = pdfText(file);
    for (const auto& name : names)
        EXPECT_THAT(text, HasSubstr(name));
    EXPECT_EQ(QString::fromStdString(text).count(QChar(0xFFFD)), 2) << "in place of the bad ones";
    // A name's and the route's, and in the standard table that of a column's title.
    const int arrows = GetParam().rateColumn == kStandard.rateColumn ? 3 : 2;
    EXPECT_EQ(QString::fromStdString(text).count(QChar(0x2192)), arrows);
    const auto fonts = pdfFonts(file);
    EXPECT_GE(fonts.all, 5);
    EXPECT_EQ(fonts.embedded, fonts.all);
    // Long ones are cut where their cell ends, as they are spelled.
    manifest.card.mountPoint = "/" + std::string(300, '\x1b');
    for (const auto& word : pdfWords(write(GetParam())))
        EXPECT_LE(word.right, 836) << word.text;
}

TEST_P(EachPdfReport, ReplaceAnOldFileOrSayThatThereIsNone) {
    addClips(1);
    const auto file = folder / (std::string(GetParam().name) + ".pdf");
    writeFile(file, std::string(1'000'000, 'x'));
    write(GetParam());
    const auto content = readFile(file);
    EXPECT_LT(content.size(), 200'000U);
    EXPECT_TRUE(content.starts_with("%PDF-"));

    std::filesystem::create_directory(folder / "gone");
    const RootFolder gone(folder / "gone");
    std::filesystem::remove(folder / "gone");
    for (const auto& [language, sentence] :
         {std::pair(kEnglish, "Could not create PDF"), std::pair(kTurkish, "PDF oluşturulamadı")})
        EXPECT_EQ(errorOf([&, language = language] {
                      GetParam().writeTree(manifest, {}, {gone, "report.pdf"}, language);
                  }),
                  sentence);
    EXPECT_THROW(GetParam().write(manifest, "/proc/self/status", kEnglish), PosixError)
        << "an old file that cannot be removed";
}

TEST_P(EachPdfReport, NoticeAFullDisk) {
    const MountedVolume volume(MountedVolume::FileSystem::Ext4, 8 << 20);
    const auto free = FileSystem::volumeCapacity(volume.path()).free;
    writeFile(volume / "rest", std::string(static_cast<std::size_t>(free) - 100'000, 'x'));
    addClips(5'000);
    try {
        GetParam().write(manifest, volume / "report.pdf", kEnglish);
        FAIL() << "the report has no room";
    } catch (const PosixError& failure) {
        EXPECT_EQ(failure.code(), ENOSPC);
    }
}

TEST_P(EachPdfReport, ComeOutTheSameFromAnyThread) {
    addClips(300);
    add("東京.mov");
    const auto expected = readFile(write(GetParam()));
    std::vector<std::string> results(3);
    {
        std::vector<std::jthread> threads;
        for (std::size_t index = 0; index < results.size(); ++index) {
            threads.emplace_back([this, index, &results] {
                const auto file = folder / std::to_string(index);
                GetParam().write(manifest, file, kEnglish);
                results[index] = readFile(file);
            });
        }
    }
    for (const auto& result : results)
        EXPECT_TRUE(result == expected);
}

INSTANTIATE_TEST_SUITE_P(Both, EachPdfReport, ::testing::Values(kStandard, kDetailed),
                         [](const auto& report) { return std::string(report.param.name); });
