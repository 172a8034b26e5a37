#include "Reports/Pdf.h"
#include "Reports/Sessions.h"

#include "Platform/Json.h"
#include "Platform/Text.h"
#include "Reports/SessionDetailedHTML.h"
#include "Reports/SessionHTML.h"
#include "support/Browser.h"
#include "support/Files.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

// The pages as a browser shows and prints them.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

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

} // namespace

TEST_P(HtmlInBrowser, FoldsAllAndLinesUpItsColumns) {
    auto huge = copiedClip("A001/B/C/huge.mov", 23.976, 23.976);
    huge.sizeBytes = 12'345'678'901'234;
    auto unproved = copiedFile("sound.wav");
    unproved.verifyStatus = VerifyStatus::CopiedUnverified;
    const auto manifest = sessionOf({huge, copiedClip("A001/mismatch.mov", 48, 25), unproved,
                                     copiedFile(std::string(255, 'W'))});
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
    auto unproved = copiedClip("A001/B/C/unproved.mov", 23.976, 23.976);
    unproved.verifyStatus = VerifyStatus::CopiedUnverified;
    auto manifest =
        sessionOf({unproved, copiedFile("1/2/3/4/5/6/7/8/9/10/11/12/13/A001C001_260314_R1XY.mov")});
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
        auto& row = files.emplace_back(copiedClip(name, 25, 25));
        row.media.edit().essence->lookName = row.media.edit().essence->lens =
            row.media.edit().timecodeEnd = row.sourceSHA256 = name;
        std::string shown = name;
        std::replace(shown.begin(), shown.end(), '/', '|');
        row.relativePath = shown;
        expected.push_back(Text::visible(shown));
    }
    auto manifest = sessionOf(files);
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
        files.push_back(copiedClip(fmt::format("A001/clip{}.mov", number), 25, 25));
    const auto page = GetParam().document(sessionOf(files), kEnglish);
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
