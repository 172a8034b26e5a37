#include "Reports/HtmlReport.h"

#include "Offload/PathSize.h"
#include "Platform/AppInfo.h"
#include "Reports/HtmlStyle.h"
#include "Reports/ReportText.h"

namespace slatewise {

namespace {

constexpr std::string_view kOpenAll =
    "document.querySelectorAll('details.dir').forEach(d=>d.open=true)";
constexpr std::string_view kCloseAll =
    "document.querySelectorAll('details.dir').forEach(d=>d.open=false)";

/// What a row takes on a page, by experience: a long page then grows once and not a dozen times.
constexpr std::size_t kBytesPerRow = 800;

} // namespace

std::string HtmlReport::document(const SessionManifest& manifest) const {
    HtmlText page;
    page.reserve(16'384 + manifest.files.size() * kBytesPerRow);
    renderHeader(page, manifest);
    page.raw("<div class=\"tree\">\n<div class=\"head\">");
    renderHead(page, manifest);
    page.raw("<ul>");
    for (const auto& node : ReportTree::build(manifest.files))
        renderNode(page, node, 0);
    page.raw("</ul>\n</div>");
    renderFooter(page);
    return page.take();
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
        .raw(style())
        .raw("</style></head><body>\n<header>\n<h1 class=\"report-title\">")
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
        .escaped(manifest.card.mountPoint)
        .raw("<span class=\"sep\">→</span>")
        .escaped(manifest.destination.sessionRoot)
        .raw("</div>\n<div class=\"counts\"><b>")
        .escaped(l10n_.folderCount(counts.folders))
        .raw("</b> · <b>")
        .escaped(l10n_.fileCount(static_cast<int>(manifest.files.size())))
        .raw("</b> · <b>")
        .escaped(PathSize::report(counts.bytesCopied, l10n_.language()))
        .raw("</b></div>\n<div class=\"toolbar\"><button type=\"button\" onclick=\"")
        .raw(kOpenAll)
        .raw("\">")
        .escaped(l10n_.expandAll())
        .raw("</button><button type=\"button\" onclick=\"")
        .raw(kCloseAll)
        .raw("\">")
        .escaped(l10n_.collapseAll())
        .raw("</button></div>\n</header>\n");
}

void HtmlReport::renderFolder(HtmlText& page, const ReportNode& folder, int depth) const {
    page.raw("<li><details class=\"dir\" open>\n<summary class=\"row\">\n<span class=\"name\">"
             "<span class=\"twist\">▾</span><span class=\"label\">")
        .escaped(folder.name)
        .raw("</span></span>");
    sizeCell(page, folder.totalBytes);
    renderFolderCells(page, folder);
    page.raw("</summary>\n<ul>");
    for (const auto& child : folder.children)
        renderNode(page, child, depth + 1);
    page.raw("</ul>\n</details></li>");
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
