#include "Reports/HtmlReport.h"

#include "Offload/PathSize.h"
#include "Platform/AppInfo.h"
#include "Platform/Text.h"
#include "Reports/HtmlStyle.h"
#include "Reports/ReportText.h"
#include "Reports/SessionSummary.h"

#include <algorithm>

namespace slatewise {

namespace {

constexpr std::string_view kOpenAll =
    "document.querySelectorAll('details.dir').forEach(d=>d.open=true)";
constexpr std::string_view kCloseAll =
    "document.querySelectorAll('details.dir').forEach(d=>d.open=false)";

/// A path whose folders keep their order whatever way their names are written.
void renderPath(HtmlText& page, const std::string& path) {
    bool isFirst = true;
    for (const auto part : Text::pieces(path, '/')) {
        if (!isFirst || path.starts_with('/'))
            page.raw("/");
        page.raw("<bdi>").escaped(part).raw("</bdi>");
        isFirst = false;
    }
}

/// The same of a path in a sentence: each part between slashes runs its own way, and they follow
/// each other as the sentence does.
void renderSentence(HtmlText& page, std::string_view sentence) {
    page.raw("<li><span>");
    for (std::size_t at; (at = sentence.find('/')) != std::string_view::npos;
         sentence.remove_prefix(at + 1))
        page.escaped(sentence.substr(0, at)).raw("</span>/<span>");
    page.escaped(sentence).raw("</span></li>");
}

constexpr std::size_t kRowsPerList = 200;

} // namespace

std::string HtmlReport::document(const SessionManifest& manifest) const {
    HtmlText page;
    render(page, manifest, ReportTree::build(manifest.files));
    return page.take();
}

void HtmlReport::write(const SessionManifest& manifest, std::span<const ReportNode> tree,
                       const FileBeneath& file) const {
    file.folder.write(file.relative, [&](const FileSystem::TextSink& put) {
        HtmlText page(put);
        render(page, manifest, tree);
        page.flush();
    });
}

void HtmlReport::render(HtmlText& page, const SessionManifest& manifest,
                        std::span<const ReportNode> tree) const {
    renderHeader(page, manifest);
    page.raw("<div class=\"tree\">\n");
    renderHead(page, manifest);
    renderItems(page, tree, 0);
    page.raw("\n</div>");
    renderFooter(page);
}

void HtmlReport::renderNode(HtmlText& page, const ReportNode& node, int depth) const {
    if (node.isDirectory())
        renderFolder(page, node, depth);
    else
        renderFile(page, node, depth);
}

void HtmlReport::renderHeader(HtmlText& page, const SessionManifest& manifest) const {
    const auto& counts = manifest.counts;
    page.raw("<!DOCTYPE html>\n<html lang=\"")
        .raw(Language::rawValue(l10n_.language()))
        .raw("\"><head><meta charset=\"utf-8\">\n<meta name=\"viewport\" "
             "content=\"width=device-width, initial-scale=1\">\n<title>")
        .escaped(l10n_.reportTitle())
        .raw(" — ")
        .escaped(manifest.card.name)
        .raw("</title><style>\n")
        .raw(HtmlStyle::shared)
        .raw(style());
    renderLabels(page);
    page.raw("</style></head><body>\n<header>\n");
    renderVerdict(page, manifest);
    page.raw("<h1 class=\"report-title\">")
        .escaped(l10n_.reportTitle())
        .raw("</h1>\n<div class=\"when\">")
        .escaped(ReportText::dateTime(manifest.startedAt, l10n_.language()))
        .raw("</div>\n<div class=\"session\"><b>")
        .raw(name())
        .raw("</b> · ")
        .escaped(l10n_.reportSession())
        .raw(" <b>")
        .escaped(manifest.sessionID)
        .raw("</b></div>\n<div class=\"path\">")
        .raw("<span>");
    renderPath(page, manifest.card.mountPoint);
    if (!manifest.wasHashing()) {
        page.raw("</span><span class=\"sep\">→</span><span>");
        renderPath(page, manifest.destination.sessionRoot);
    }
    page.raw("</span></div>\n<div class=\"counts\"><b>")
        .escaped(l10n_.folderCount(counts.folders))
        .raw("</b> · <b>")
        .escaped(l10n_.fileCount(static_cast<int>(manifest.files.size())))
        .raw("</b> · <b>")
        .escaped(PathSize::report(manifest.bytesHandled(), l10n_.language()))
        .raw("</b></div>\n");
    // There may be very many: what was copied where is said before them.
    renderSentences(page, "failure", l10n_.reportProblems(), manifest.problems);
    renderSentences(page, "note", l10n_.reportNotes(), manifest.notes);
    page.raw(R"(<div class="toolbar"><button type="button" onclick=")")
        .raw(kOpenAll)
        .raw("\">")
        .escaped(l10n_.expandAll())
        .raw(R"(</button><button type="button" onclick=")")
        .raw(kCloseAll)
        .raw("\">")
        .escaped(l10n_.collapseAll())
        .raw("</button></div>\n</header>\n");
}

/// Where rows stand as blocks each value bears its column's title.
void HtmlReport::renderLabels(HtmlText& page) const {
    page.raw("@media screen and (max-width:").raw(HtmlStyle::blocksBelow).raw("){\n");
    const auto titles = columnTitles();
    for (std::size_t column = 1; column < titles.size(); ++column)
        page.raw(".file.row>:nth-child(")
            .number(static_cast<long long>(column) + 1)
            .raw(")::before{content:\"")
            .raw(titles[column])
            .raw("\"}\n");
    page.raw("}\n");
}

/// A long folder is several lists: a browser lays out those in sight, and looks at each of the
/// others whenever it paints.
void HtmlReport::renderItems(HtmlText& page, std::span<const ReportNode> nodes, int depth) const {
    do {
        const auto part = nodes.first(std::min(nodes.size(), kRowsPerList));
        nodes = nodes.subspan(part.size());
        if (part.size() < kRowsPerList && nodes.empty())
            page.raw("<ul>");
        else
            page.raw("<ul style=\"--n:").number(static_cast<long long>(part.size())).raw("\">");
        for (const auto& node : part)
            renderNode(page, node, depth);
        page.raw("</ul>");
    } while (!nodes.empty());
}

void HtmlReport::renderVerdict(HtmlText& page, const SessionManifest& manifest) const {
    const auto summary = SessionSummary::of(manifest, l10n_);
    page.raw("<section class=\"verdict ")
        .raw(rawValue(summary.status))
        .raw("\"><strong>")
        .escaped(summary.verdict)
        .raw("</strong><span>")
        .escaped(summary.meaning)
        .raw("</span></section>\n<dl class=\"facts\">");
    for (const auto* facts : {&summary.identity, &summary.times, &summary.totals}) {
        for (const auto& fact : *facts)
            page.raw("<div><dt>")
                .escaped(fact.label)
                .raw("</dt><dd>")
                .escaped(fact.value)
                .raw("</dd></div>");
    }
    page.raw("</dl>\n");
}

void HtmlReport::renderSentences(HtmlText& page, std::string_view kind, std::string_view title,
                                 const std::vector<std::string>& sentences) {
    if (sentences.empty())
        return;
    page.raw("<section class=\"problems ").raw(kind).raw("\"><b>").escaped(title).raw("</b><ul>");
    for (const auto& sentence : sentences)
        renderSentence(page, sentence);
    page.raw("</ul></section>\n");
}

void HtmlReport::renderFolder(HtmlText& page, const ReportNode& folder, int depth) const {
    page.raw("<li><details class=\"dir\" open>\n<summary class=\"row\" style=\"--d:")
        .number(depth)
        .raw("\">\n<span class=\"name\">"
             "<span class=\"twist\">▾</span><span class=\"label\">")
        .escaped(folder.name)
        .raw("</span></span>");
    sizeCell(page, folder.totalBytes);
    renderFolderCells(page, folder);
    page.raw("</summary>\n");
    renderItems(page, folder.children, depth + 1);
    page.raw("\n</details></li>");
}

void HtmlReport::statusWords(HtmlText& page, std::string_view word) {
    // The word may be broken where its own words are, and nowhere else.
    for (std::size_t at; (at = word.find('_')) != std::string_view::npos;
         word.remove_prefix(at + 1))
        page.raw(word.substr(0, at + 1)).raw("<wbr>");
    page.raw(word);
}

std::string_view HtmlReport::styleOf(VerifyStatus status) {
    switch (status) {
    case VerifyStatus::Verified:
        return "ok";
    case VerifyStatus::Hashed:
        return "hashed";
    case VerifyStatus::Skipped:
        return "skip";
    case VerifyStatus::CopiedUnverified:
    case VerifyStatus::Mismatch:
    case VerifyStatus::Failed:
        break;
    }
    return "alarm";
}

void HtmlReport::sizeCell(HtmlText& page, std::int64_t bytes) const {
    page.raw("<span class=\"num\">")
        .escaped(PathSize::format(bytes, l10n_.language()))
        .raw("<small>")
        .escaped(PathSize::grouped(bytes, l10n_.language()))
        .raw("</small></span>");
}

void HtmlReport::renderFooter(HtmlText& page) const {
    page.raw("<footer>\n<span>")
        .raw(AppInfo::name)
        .raw(" v")
        .raw(AppInfo::version)
        .raw(footerNote())
        .raw("</span>\n<span class=\"sp\"></span>\n<a href=\"")
        .escaped(AppInfo::websiteURL)
        .raw("\">")
        .escaped(AppInfo::linkText(AppInfo::websiteURL))
        .raw("</a>\n</footer>\n</body></html>");
}

} // namespace slatewise
