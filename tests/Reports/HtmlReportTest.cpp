#include "Reports/Sessions.h"

#include "Platform/AppInfo.h"
#include "Reports/SessionDetailedHTML.h"
#include "Reports/SessionHTML.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

const std::string kHash(64, 'a');

/// The page without its style sheet.
std::string unstyled(const std::string& page) {
    const auto begin = page.find("<style>");
    const auto end = page.find("</style>");
    EXPECT_EQ(page.find("<style>", end), std::string::npos);
    return page.substr(0, begin) + page.substr(end);
}

std::string standardRow(const ManifestFile& row, int depth = 0, AppLanguage language = kEnglish) {
    const auto nodes = ReportTree::build({&row, 1});
    return SessionHTML::renderNode(nodes.front(), language, depth);
}

std::string detailedRow(const ManifestFile& row, const ClipEssence& common = {}, int depth = 0) {
    const auto nodes = ReportTree::build({&row, 1});
    return SessionDetailedHTML::renderNode(nodes.front(), common, kEnglish, depth);
}

} // namespace

TEST(SessionHTML, IsExactlyThisText) {
    auto manifest = sessionOf({copiedClip("DCIM/a&b.mov", 25, 24)});
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
        auto row = copiedFile("a");
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
        auto row = copiedClip("a.mov", capture, rate);
        if (!hasTimecode) {
            row.media.edit().timecodeStart = " ";
            row.media.edit().timecodeEnd.reset();
            EXPECT_THAT(standardRow(row), HasSubstr("<span class=\"muted\">00:00:10:00</span>"));
            EXPECT_THAT(standardRow(row), HasSubstr("<span class=\"muted\">NDF</span>"));
        }
        EXPECT_THAT(standardRow(row), HasSubstr(cell));
    }
    EXPECT_THAT(standardRow(copiedClip("a.mov", 23.976, 23.98), 0, kTurkish),
                HasSubstr("<span class=\"fps\">23,976 / 23,98</span>"));
}

TEST(SessionHTML, AnEmptySessionIsAWholePageThatNamesNoFolderThatHashingDidNotMake) {
    auto manifest = sessionOf({});
    manifest.status = OutcomeStatus::Hashed;
    EXPECT_THAT(unstyled(SessionHTML::document(manifest, kEnglish)),
                AllOf(HasSubstr("A001</bdi></span></div>"), Not(HasSubstr("/<bdi>SSD")),
                      HasSubstr("<b>0 folders</b> · <b>0 files</b>"),
                      HasSubstr("<span>SHA-256</span></div></div>\n<ul></ul>\n</div><footer>")));
}

TEST(SessionDetailedHTML, DiffersFromTheStandardPageInThesePlaces) {
    auto manifest = sessionOf({copiedClip("DCIM/a.mov", 25, 24)});
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
    EXPECT_THAT(SessionDetailedHTML::document(sessionOf({copiedFile("a")}), kEnglish),
                HasSubstr("A&lt;001&gt;</span></div>\n<ul>"))
        << "nothing known of the card";
}

TEST(SessionDetailedHTML, RowsSayWhatTheCardDoesNot) {
    auto row = copiedClip("a<b.mov", 25, 24);
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

    EXPECT_THAT(detailedRow(copiedFile("a")),
                AllOf(HasSubstr("\">a</span></span></span>"),
                      HasSubstr("<span class=\"cell\">—</span>\n<span class=\"cell\">—</span>\n"
                                "<span class=\"cell ok\">COPY\nverified</span>")));
}

TEST(HtmlReport, NamesTheSiteByItsHost) {
    EXPECT_EQ(AppInfo::linkText("https://reports.example/a?b"), "reports.example");
    for (const auto* url : {"", "mailto:me@example", "/local"})
        EXPECT_EQ(AppInfo::linkText(url), "Slatewise Tools") << url;
}
