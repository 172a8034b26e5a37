#include "Reports/SessionDetailedHTML.h"
#include "Reports/SessionHTML.h"

#include "Pdf.h"

#include "Platform/AppInfo.h"
#include "Platform/Json.h"
#include "Reports/ReportWriter.h"
#include "support/Browser.h"
#include "support/Files.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto kEnglish = AppLanguage::English;
constexpr auto kTurkish = AppLanguage::Turkish;
const std::string kHash(64, 'a');
const std::string kVersion = "Slatewise DIT v" + std::string(AppInfo::version);

ManifestFile file(const std::string& path) {
    ManifestFile result;
    result.relativePath = path;
    result.sizeBytes = 1'234'567;
    result.action = RowAction::Copy;
    result.verifyStatus = VerifyStatus::Verified;
    result.sourceSHA256 = kHash;
    return result;
}

ManifestFile clip(const std::string& path, double captureFps, double timecodeRate) {
    auto result = file(path);
    result.mtime = Clock::fromIso8601("2026-03-01T09:30:15Z");
    result.media.edit().timecodeStart = "01:00:00:00";
    result.media.edit().timecodeEnd = "01:00:10:00";
    result.media.edit().durationTC = "00:00:10:00";
    result.media.edit().captureFps = captureFps;
    result.media.edit().timecodeRate = timecodeRate;
    result.media.edit().timecodeDropFrame = false;
    result.media.edit().essence.emplace().codec = "ProRes";
    result.media.edit().essence->width = 1920;
    result.media.edit().essence->height = 1080;
    result.media.edit().essence->cameraModel = "ALEXA";
    return result;
}

SessionManifest session(std::vector<ManifestFile> files) {
    SessionManifest manifest;
    manifest.sessionID = "12345678-9abc-def0-1234-56789abcdef0";
    manifest.startedAt = *Clock::fromIso8601("2026-03-01T09:30:15Z");
    manifest.finishedAt = manifest.startedAt + std::chrono::milliseconds(49'500);
    manifest.card.name = "A<001>";
    manifest.card.camera = "CamA";
    manifest.card.ekip = "Ünal";
    manifest.card.mountPoint = "/media/A001";
    manifest.destination.sessionRoot = "/media/SSD/A001";
    manifest.files = std::move(files);
    manifest.counts.folders = ReportWriter::folderCount(manifest.files);
    manifest.counts.filesCopied = static_cast<int>(manifest.files.size());
    manifest.counts.bytesCopied = 1'234'567;
    return manifest;
}

/// The page without its style sheet.
std::string unstyled(const std::string& page) {
    const auto begin = page.find("<style>");
    const auto end = page.find("</style>");
    EXPECT_EQ(page.find("<style>", end), std::string::npos);
    return page.substr(0, begin) + page.substr(end);
}

std::string standardRow(const ManifestFile& row, int depth = 0) {
    const auto nodes = ReportTree::build({&row, 1});
    return SessionHTML::renderNode(nodes.front(), kEnglish, depth);
}

std::string detailedRow(const ManifestFile& row, const ClipEssence& common = {}, int depth = 0) {
    const auto nodes = ReportTree::build({&row, 1});
    return SessionDetailedHTML::renderNode(nodes.front(), common, kEnglish, depth);
}

} // namespace

TEST(SessionHTML, IsExactlyThisText) {
    auto manifest = session({clip("DCIM/a&b.mov", 25, 24)});
    manifest.problems = {"a&b.mov okunamadı"};
    manifest.notes = {"B bağlantısı kartın dışına çıkıyor"};
    const auto page = SessionHTML::document(manifest, kTurkish);
    EXPECT_EQ(
        unstyled(page),
        "<!DOCTYPE html>\n<html lang=\"tr\"><head><meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<title>Slatewise DIT raporu — A&lt;001&gt;</title></style></head><body>\n<header>\n"
        "<section class=\"verdict failed\"><strong>BAŞARISIZ</strong>"
        "<span>Bir şey ters gitti. Kartı silmeyin.</span></section>\n"
        "<dl class=\"facts\"><div><dt>Kart</dt><dd>A&lt;001&gt;</dd></div>"
        "<div><dt>Kamera</dt><dd>CamA</dd></div><div><dt>Ekip</dt><dd>Ünal</dd></div>"
        "<div><dt>Başlangıç</dt><dd>1 Mar 2026 12:30</dd></div>"
        "<div><dt>Bitiş</dt><dd>1 Mar 2026 12:31</dd></div>"
        "<div><dt>Dosya</dt><dd>1 kopyalandı, 0 atlandı, 0 hata</dd></div>"
        "<div><dt>Boyut</dt><dd>1,2 MB (1.234.567 bayt)</dd></div>"
        "<div><dt>Süre</dt><dd>50 sn</dd></div><div><dt>Hız</dt><dd>25 KB/sn</dd></div></dl>\n"
        "<h1 class=\"report-title\">Slatewise DIT raporu</h1>\n"
        "<div class=\"when\">1 Mar 2026 12:30</div>\n"
        "<div class=\"session\"><b>Reports_Standart</b> · Oturum "
        "<b>12345678-9abc-def0-1234-56789abcdef0</b></div>\n"
        "<div class=\"path\"><span>/<bdi>media</bdi>/<bdi>A001</bdi></span>"
        "<span class=\"sep\">→</span>"
        "<span>/<bdi>media</bdi>/<bdi>SSD</bdi>/<bdi>A001</bdi></span></div>\n"
        "<div class=\"counts\"><b>1 klasör</b> · <b>1 dosya</b> · "
        "<b>1,2 MB (1.234.567 bayt)</b></div>\n"
        "<section class=\"problems failure\"><b>Sorunlar</b><ul>"
        "<li><span>a&amp;b.mov okunamadı</span></li></ul></section>\n"
        "<section class=\"problems note\"><b>Dikkat</b><ul>"
        "<li><span>B bağlantısı kartın dışına çıkıyor</span></li></ul></section>\n"
        "<div class=\"toolbar\"><button type=\"button\" onclick=\""
        "document.querySelectorAll('details.dir').forEach(d=>d.open=true)\">Tümünü aç</button>"
        "<button type=\"button\" onclick=\""
        "document.querySelectorAll('details.dir').forEach(d=>d.open=false)\">Tümünü kapat</button>"
        "</div>\n</header>\n<div class=\"tree\">\n"
        "<div class=\"heads\"><div class=\"head\"><span class=\"n\">Ad</span>"
        "<span>Boyut</span><span>İşlem</span><span>Doğrulama</span>"
        "<span>TC başlangıç → bitiş</span><span>Süre</span><span>çekim / TC</span><span>DF</span>"
        "<span>SHA-256</span></div></div>\n<ul><li><details class=\"dir\" open>\n"
        "<summary class=\"row\" style=\"--d:0\">\n<span class=\"name\"><span "
        "class=\"twist\">▾</span>"
        "<span class=\"label\">DCIM</span></span>"
        "<span class=\"num\">1,2 MB<small>1.234.567</small></span><span>1 dosya</span>"
        "<span></span><span class=\"muted\">—</span><span class=\"muted\">—</span>"
        "<span class=\"muted\">—</span><span class=\"muted\">—</span><span></span></summary>\n<ul>"
        "<li><div class=\"file row\" style=\"--d:1\" title=\"2026-03-01T09:30:15Z\">"
        "<span class=\"name\" style=\"padding-left:44px\"><span class=\"label\">a&amp;b.mov</span>"
        "</span><span class=\"num\">1,2 MB<small>1.234.567</small></span>"
        "<span class=\"\">COPY</span><span class=\"ok\">verified</span>"
        "<span class=\"tc\">01:00:00:00 → 01:00:10:00</span>"
        "<span class=\"dur\">00:00:10:00</span><span class=\"fps mismatch\">25 / 24</span>"
        "<span class=\"df\">NDF</span><span class=\"hash\" title=\"" +
            kHash + "\">" + kHash +
            "</span>\n</div></li></ul>\n</details></li></ul>\n</div><footer>\n"
            "<span>" +
            kVersion +
            "</span>\n<span class=\"sp\"></span>\n"
            "<a href=\"" +
            std::string(AppInfo::websiteURL) + "\">" + AppInfo::linkText(AppInfo::websiteURL) +
            "</a>\n</footer>\n"
            "</body></html>");
}

TEST(SessionHTML, RowsMuteWhatIsNotKnown) {
    const std::tuple<RowAction, VerifyStatus, const char*> fates[] = {
        {RowAction::Skip, VerifyStatus::Skipped,
         "<span class=\"skip\">SKIP</span><span class=\"skip\">skipped</span>"
         "<span class=\"muted\">—</span><span class=\"muted\">—</span>"
         "<span class=\"muted\">—</span><span class=\"muted\">—</span>"
         "<span class=\"hash\" title=\"\"></span>"},
        {RowAction::Hash, VerifyStatus::Hashed,
         "<span class=\"\">HASH</span><span class=\"hashed\">hashed</span>"},
        {RowAction::Copy, VerifyStatus::CopiedUnverified,
         "<span class=\"alarm\">COPY</span><span class=\"alarm\">copied_<wbr>unverified</span>"},
        {RowAction::Fail, VerifyStatus::Mismatch,
         "<span class=\"alarm\">FAIL</span><span class=\"alarm\">mismatch</span>"},
        {RowAction::Fail, VerifyStatus::Failed,
         "<span class=\"alarm\">FAIL</span><span class=\"alarm\">failed</span>"},
    };
    for (const auto& [action, status, cells] : fates) {
        auto row = file("a");
        row.action = action;
        row.verifyStatus = status;
        if (action == RowAction::Skip)
            row.sourceSHA256.reset();
        EXPECT_THAT(standardRow(row),
                    AllOf(HasSubstr("style=\"--d:0\" title=\"\""), HasSubstr(cells)));
    }

    const std::tuple<double, double, bool, const char*> rates[] = {
        {25, 24, true, "<span class=\"fps mismatch\">25 / 24</span>"},
        {23.976, 23.98, true, "<span class=\"fps\">23.976 / 23.98</span>"},
        {25, 24, false, "<span class=\"fps mismatch\">25 / 24</span>"},
        {25, 25, false, "<span class=\"muted\">25 / 25</span>"},
    };
    for (const auto& [capture, rate, hasTimecode, cell] : rates) {
        auto row = clip("a.mov", capture, rate);
        if (!hasTimecode) {
            row.media.edit().timecodeStart = " ";
            row.media.edit().timecodeEnd.reset();
            EXPECT_THAT(standardRow(row), HasSubstr("<span class=\"muted\">00:00:10:00</span>"));
            EXPECT_THAT(standardRow(row), HasSubstr("<span class=\"muted\">NDF</span>"));
        }
        EXPECT_THAT(standardRow(row), HasSubstr(cell));
    }
}

TEST(SessionHTML, AnEmptySessionIsAWholePageThatNamesNoFolderThatHashingDidNotMake) {
    auto manifest = session({});
    manifest.status = OutcomeStatus::Hashed;
    EXPECT_THAT(unstyled(SessionHTML::document(manifest, kEnglish)),
                AllOf(HasSubstr("A001</bdi></span></div>"), Not(HasSubstr("/<bdi>SSD")),
                      HasSubstr("<b>0 folders</b> · <b>0 files</b>"),
                      HasSubstr("<span>SHA-256</span></div></div>\n<ul></ul>\n</div><footer>")));
}

TEST(SessionDetailedHTML, DiffersFromTheStandardPageInThesePlaces) {
    auto manifest = session({clip("DCIM/a.mov", 25, 24)});
    manifest.card.mountPoint = "copies/A001";
    const auto page = unstyled(SessionDetailedHTML::document(manifest, kEnglish));
    EXPECT_THAT(
        page,
        AllOf(HasSubstr("<b>Reports_Detailed</b> · Session <b>"),
              HasSubstr("<span><bdi>copies</bdi>/<bdi>A001</bdi></span>"),
              HasSubstr("<div class=\"heads\"><div "
                        "class=\"head\"><span>Name</span><span>Size</span><span>Clip</span>"
                        "<span>Timing</span><span>Verify</span><span>SHA-256</span></div></div>\n"
                        "<div class=\"card-row\"><span class=\"card-name\">A&lt;001&gt;</span>"
                        "<span class=\"card-facts\">ALEXA</span></div>\n<ul><li><details"),
              HasSubstr("DCIM</span></span><span class=\"num\">1.2 MB<small>1,234,567</small>"
                        "</span><span class=\"cell\">1 files</span><span class=\"muted\">—</span>"
                        "<span>1 files</span><span></span></summary>\n<ul><li>"),
              HasSubstr("<span>" + kVersion + " · Reports_Detailed</span>")));
    EXPECT_THAT(SessionDetailedHTML::document(session({file("a")}), kEnglish),
                HasSubstr("A&lt;001&gt;</span></div>\n<ul>"))
        << "nothing known of the card";
}

TEST(SessionDetailedHTML, RowsSayWhatTheCardDoesNot) {
    auto row = clip("a<b.mov", 25, 24);
    row.media.edit().essence->lookName = "K445";
    EXPECT_EQ(detailedRow(row, {}, 2),
              "<li><div class=\"file row\" style=\"--d:2\">\n"
              "<span class=\"name\" style=\"padding-left:32px\">"
              "<span class=\"file-id\"><span class=\"label\">a&lt;b.mov</span>"
              "<span class=\"mtime\">2026-03-01 12:30:15</span></span></span>"
              "<span class=\"num\">1.2 MB<small>1,234,567</small></span>\n"
              "<span class=\"cell\">ProRes\n1920×1080 (HD)\nK445</span>\n"
              "<span class=\"cell fps mismatch\">01:00:00:00 → 01:00:10:00\n00:00:10:00\n"
              "25 / 24  NDF</span>\n<span class=\"cell ok\">COPY\nverified</span>\n"
              "<span class=\"hash\" title=\"" +
                  kHash + "\">" + kHash + "</span>\n</div></li>");
    EXPECT_THAT(detailedRow(row, *row.media->essence), Not(HasSubstr("K445")));

    EXPECT_THAT(detailedRow(file("a")),
                AllOf(HasSubstr("\">a</span></span></span>"),
                      HasSubstr("<span class=\"cell\">—</span>\n<span class=\"cell\">—</span>\n"
                                "<span class=\"cell ok\">COPY\nverified</span>")));
}

TEST(HtmlReport, NamesTheSiteByItsHost) {
    EXPECT_EQ(AppInfo::linkText("https://reports.example/a?b"), "reports.example");
    for (const auto* url : {"", "mailto:me@example", "/local"})
        EXPECT_EQ(AppInfo::linkText(url), "Slatewise Tools") << url;
}

struct Page {
    const char* name;
    std::string (*document)(const SessionManifest&, AppLanguage);
};
constexpr Page kPages[] = {{"Standard", SessionHTML::document},
                           {"Detailed", SessionDetailedHTML::document}};

/// Each page in each language at each width, in a browser.
class HtmlInBrowser : public ::testing::TestWithParam<std::tuple<Page, AppLanguage, int>> {
protected:
    std::string evaluate(const SessionManifest& manifest, const std::string& functionBody) const {
        const auto& [page, language, width] = GetParam();
        return evaluateInBrowser(page.document(manifest, language), functionBody, width);
    }
};

TEST_P(HtmlInBrowser, FoldsAllAndLinesUpItsColumns) {
    auto huge = clip("A001/B/C/huge.mov", 23.976, 23.976);
    huge.sizeBytes = 12'345'678'901'234;
    auto unproved = file("sound.wav");
    unproved.verifyStatus = VerifyStatus::CopiedUnverified;
    const auto manifest =
        session({huge, clip("A001/mismatch.mov", 48, 25), unproved, file(std::string(255, 'W'))});
    EXPECT_EQ(evaluate(manifest, R"js(
        const rows = [...document.querySelectorAll('.head, summary.row, .file.row')];
        const columns = row => [...row.children].map(cell => cell.getBoundingClientRect())
            .map(box => Math.round(box.left) + '-' + Math.round(box.right)).join(' ');
        const aligned = rows.every(row => columns(row) === columns(rows[0]));
        const wide = document.documentElement.scrollWidth > window.innerWidth;
        const [open, close] = document.querySelectorAll('.toolbar button');
        const state = () => [...document.querySelectorAll('details')].map(dir => dir.open) + '/' +
            [...document.querySelectorAll('.file.row')].map(row => row.checkVisibility());
        const states = [state()];
        close.click();
        states.push(state());
        open.click();
        states.push(state());
        return [rows.length, aligned, wide, ...states].join('\n');
    )js"),
              "8\ntrue\nfalse\n"
              "true,true,true/true,true,true,true\n"
              "false,false,false/false,false,true,true\n"
              "true,true,true/true,true,true,true");
}

INSTANTIATE_TEST_SUITE_P(, HtmlInBrowser,
                         ::testing::Combine(::testing::ValuesIn(kPages),
                                            ::testing::Values(kEnglish, kTurkish),
                                            ::testing::Values(1280, 1920)),
                         [](const auto& test) {
                             return std::get<0>(test.param).name +
                                    std::string(Language::rawValue(std::get<1>(test.param))) +
                                    std::to_string(std::get<2>(test.param));
                         });

/// Each page in each language, in windows of every width.
class HtmlInAnyWindow : public ::testing::TestWithParam<std::tuple<Page, AppLanguage>> {};

TEST_P(HtmlInAnyWindow, ShowsEveryValue) {
    auto unproved = clip("A001/B/C/unproved.mov", 23.976, 23.976);
    unproved.verifyStatus = VerifyStatus::CopiedUnverified;
    auto manifest =
        session({unproved, file("1/2/3/4/5/6/7/8/9/10/11/12/13/A001C001_260314_R1XY.mov")});
    manifest.problems = {std::string(120, 'x')};
    manifest.status = OutcomeStatus::Hashed;
    const auto framed = [&](const std::string& script) {
        // A window has a least width, a frame in it has none.
        const auto& [page, language] = GetParam();
        return evaluateInBrowser(page.document(manifest, language),
                                 "const page = document.documentElement.outerHTML;"
                                 "document.documentElement.innerHTML = '<body></body>';"
                                 "return [360, 700, 900, 1000, 1400].map(width => {"
                                 "const frame = document.createElement('iframe');"
                                 "frame.style.width = width + 'px';"
                                 "frame.style.height = '900px';"
                                 "document.body.append(frame);"
                                 "const inner = frame.contentDocument;"
                                 "inner.open(); inner.write(page.split('<script>')[0]);"
                                 "inner.close();" +
                                     script + "}).join();");
    };
    EXPECT_EQ(
        framed(R"js(
        const wide = inner.documentElement.scrollWidth > width;
        const outside = [...inner.querySelectorAll('.row > *, dd, .label')].filter(cell => {
            const box = cell.getBoundingClientRect();
            return box.width > 0 && box.right > width;
        }).length;
        const fate = [...inner.querySelectorAll('wbr')][0].parentNode;
        const cut = [...inner.querySelectorAll('.hash')].filter(
            hash => hash.scrollWidth > hash.clientWidth + 1).length;
        const levels = new Set([...inner.querySelectorAll('summary .label')].map(
            label => Math.round(label.getBoundingClientRect().left))).size;
        const name = inner.createRange();
        name.selectNodeContents([...inner.querySelectorAll('.file .label')].find(
            label => label.textContent.endsWith('R1XY.mov')));
        const label = name.startContainer;
        const within = label.getBoundingClientRect().right
            <= label.closest('.name').getBoundingClientRect().right + 1;
        return [wide, outside, cut, levels > 5, within, name.getClientRects().length < 3, fate.scrollWidth > fate.clientWidth + 1 && fate.clientWidth > 0,
                inner.querySelectorAll('.hash')[1].textContent.length,
                getComputedStyle(inner.querySelector('.verdict')).color].join(' ');
    )js"),
        fmt::format("{0},{0},{0},{0},{0}", "false 0 0 true true true false 64 rgb(255, 255, 255)"));
}

INSTANTIATE_TEST_SUITE_P(, HtmlInAnyWindow,
                         ::testing::Combine(::testing::ValuesIn(kPages),
                                            ::testing::Values(kEnglish, kTurkish)),
                         [](const auto& test) {
                             return std::get<0>(test.param).name +
                                    std::string(Language::rawValue(std::get<1>(test.param)));
                         });

class EachHtml : public ::testing::TestWithParam<Page> {};

TEST_P(EachHtml, ShowsForeignBytesAsTextAndRunsNothing) {
    const std::vector<std::string> names = {
        "\"onmouseover=\"alert(1)\" x",
        "&amp;&lt;known",
        "</span></div></li></ul><script>alert(1)<",
        "<img src=x onerror=alert(1)>",
        "bad\xff\xfe",
        "javascript:alert(1)",
        "line\nfeed",
        "\u202eturned and never ended \u2067",
        std::string(255, 'W'),
    };
    std::vector<ManifestFile> files;
    Json::Value expected = Json::Value::array();
    for (const auto& name : names) {
        auto& row = files.emplace_back(clip(name, 25, 25));
        row.media.edit().essence->lookName = row.media.edit().essence->lens =
            row.media.edit().timecodeEnd = row.sourceSHA256 = name;
        std::string shown = name;
        std::replace(shown.begin(), shown.end(), '/', '|');
        row.relativePath = shown;
        expected.push_back(Text::visible(shown));
    }
    auto manifest = session(files);
    manifest.card.name = "</title></style><script>alert(1)</script><b onclick=x>";
    manifest.card.mountPoint = "/media/\u202eA001";
    manifest.sessionID = "<i>";
    manifest.problems = {"Copying stopped at فيديو/مقطع/a.mov: why"};
    const auto page = GetParam().document(manifest, kEnglish);

    EXPECT_EQ(evaluateInBrowser(page, "const names = " + Json::compactText(expected) + R"js(;
        const labels = [...document.querySelectorAll('.file .label')].map(l => l.textContent);
        const same = JSON.stringify(labels.sort()) === JSON.stringify(names.sort());
        const foreign = document.querySelectorAll('script, img, i, link, iframe').length - 1;
        const handlers = [...document.querySelectorAll('*')].filter(
            e => [...e.attributes].some(a => a.name.startsWith('on'))).map(e => e.tagName);
        const target = [...document.querySelectorAll('.path bdi')].pop().firstChild;
        const boxOf = at => { const range = document.createRange();
            range.setStart(target, at); range.setEnd(target, at + 1);
            return range.getBoundingClientRect(); };
        const forward = boxOf(0).left < boxOf(target.length - 1).left;
        const sentence = document.querySelector('.problems li');
        const leftOf = word => {
            const texts = document.createTreeWalker(sentence, NodeFilter.SHOW_TEXT);
            const range = document.createRange();
            while (!texts.nextNode().data.includes(word));
            const at = texts.currentNode.data.indexOf(word);
            range.setStart(texts.currentNode, at);
            range.setEnd(texts.currentNode, at + word.length);
            return range.getBoundingClientRect().left;
        };
        const inOrder = leftOf('at') < leftOf('فيديو') && leftOf('فيديو') < leftOf('مقطع') &&
            leftOf('مقطع') < leftOf('why');
        return [same, foreign, handlers, forward, inOrder].join(' ');
    )js"),
              "true 0 BUTTON,BUTTON true true");

    const std::regex loads("url\\(|@import|src=(?!x)|<link|https?://(?!slatewise\\.example/\">)");
    EXPECT_FALSE(std::regex_search(page, loads)) << "a page stands alone";
}

TEST_P(EachHtml, IsDarkWhereWantedAndPrintedOnLightPaperWithHeadsOnEveryPage) {
    std::vector<ManifestFile> files;
    for (int number = 100; number < 200; ++number)
        files.push_back(clip(fmt::format("A001/clip{}.mov", number), 25, 25));
    const auto page = GetParam().document(session(files), kEnglish);
    const auto ground = "return getComputedStyle(document.body).backgroundColor";
    EXPECT_EQ(evaluateInBrowser(page, ground, 1280, Appearance::Dark), "rgb(21, 23, 28)");

    const TemporaryFolder folder;
    const auto print = folder / "page.pdf";
    printInBrowser(page, print, Appearance::Dark);
    const auto words = pdfWords(print);
    const auto count = static_cast<int>(pdfPageSizes(print).size());
    EXPECT_GE(count, 3);
    for (int number = 1; number <= count; ++number) {
        const auto isHere = Field(&PdfWord::page, number);
        EXPECT_THAT(wordsLike(words, "SHA-256"), Contains(isHere).Times(1));
        EXPECT_THAT(wordsLike(words, std::to_string(number)), Contains(isHere));
        EXPECT_THAT(wordsLike(words, "/"), Contains(isHere));
        EXPECT_EQ(pdfPicture(print, number).pixelColor(2, 2), QColor(Qt::white));
    }
    EXPECT_EQ(wordsLike(words, "clip199.mov").size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(, EachHtml, ::testing::ValuesIn(kPages),
                         [](const auto& test) { return test.param.name; });
