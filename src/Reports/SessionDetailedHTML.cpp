#include "Reports/SessionDetailedHTML.h"

#include "Language/L10n.h"
#include "Offload/ReportNames.h"
#include "Offload/TimecodeFormat.h"
#include "Reports/EssenceText.h"
#include "Reports/HtmlReport.h"
#include "Reports/HtmlStyle.h"
#include "Reports/ReportText.h"

#include <string>
#include <vector>

namespace slatewise::SessionDetailedHTML {

namespace {

/// How far each level of folders moves a file's name to the right, in pixels.
constexpr int kIndent = 14;
constexpr int kMargin = 4;

using Lines = std::vector<std::string>;

Lines orDash(const Lines& lines) {
    return lines.empty() ? Lines{"—"} : lines;
}

Lines clipText(const ManifestFile& file, const ClipEssence& common, AppLanguage language) {
    return file.media->essence ? EssenceText::clipLines(*file.media->essence, common, language)
                               : Lines();
}

class DetailedReport : public HtmlReport {
public:
    DetailedReport(const ClipEssence& common, AppLanguage language)
        : HtmlReport(language), common_(common) {}

protected:
    std::string_view name() const override { return ReportNames::detailed; }
    std::string_view style() const override { return HtmlStyle::detailed; }
    std::string_view footerNote() const override { return " · Reports_Detailed"; }

    std::vector<L10n::Text> columnTitles() const override {
        return {l10n().colName(),   l10n().reportSize(), l10n().colClip(),
                l10n().colTiming(), l10n().colVerify(),  "SHA-256"};
    }

    void renderHead(HtmlText& page, const SessionManifest& manifest) const override {
        page.raw(R"(<div class="heads"><div class="head">)");
        for (const auto title : columnTitles())
            page.raw("<span>").escaped(title).raw("</span>");
        page.raw("</div></div>\n<div class=\"card-row\"><span class=\"card-name\">")
            .escaped(manifest.card.name)
            .raw("</span>");
        const auto facts = ReportText::cardFactsLine(common_, l10n().language());
        if (!facts.empty())
            page.raw("<span class=\"card-facts\">").escaped(facts).raw("</span>");
        page.raw("</div>\n");
    }

    void renderFolderCells(HtmlText& page, const ReportNode& folder) const override {
        const auto count = l10n().fileCount(folder.fileCount);
        page.raw("<span class=\"cell\">")
            .escaped(count)
            .raw("</span><span class=\"muted\">—</span><span>")
            .escaped(count)
            .raw("</span><span></span>");
    }

    void renderFile(HtmlText& page, const ReportNode& node, int depth) const override {
        const auto& file = *node.file;
        page.raw(R"(<li><div class="file row" style="--d:)")
            .number(depth)
            .raw("\">\n<span class=\"name\" style=\"padding-left:")
            .number(depth * kIndent + kMargin)
            .raw(R"(px"><span class="file-id"><span class="label">)")
            .escaped(node.name)
            .raw("</span>");
        if (file.mtime)
            page.raw("<span class=\"mtime\">")
                .escaped(ReportText::fileModified(*file.mtime))
                .raw("</span>");
        page.raw("</span></span>");
        sizeCell(page, file.sizeBytes);
        const bool isMismatch =
            TimecodeFormat::capTC(file.media->captureFps, file.media->timecodeRate).mismatch;
        const auto hash = file.sourceSHA256.value_or("");
        page.raw("\n<span class=\"cell\">")
            .escapedLines(orDash(clipText(file, common_, l10n().language())))
            .raw("</span>\n<span class=\"cell")
            .raw(isMismatch ? " fps mismatch" : "")
            .raw("\">")
            .escapedLines(orDash(ReportText::timingLines(file, l10n().language())))
            .raw("</span>\n<span class=\"cell ")
            .raw(styleOf(file.verifyStatus))
            .raw("\">")
            .raw(rawValue(file.action))
            .raw("\n");
        statusWords(page, rawValue(file.verifyStatus));
        page.raw("</span>\n<span class=\"hash\" title=\"")
            .escaped(hash)
            .raw("\">")
            .escaped(hash)
            .raw("</span>\n</div></li>");
    }

private:
    const ClipEssence& common_;
};

} // namespace

void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language) {
    const auto common = manifest.cardEssence();
    DetailedReport(common, language).write(manifest, tree, file);
}

std::string document(const SessionManifest& manifest, AppLanguage language) {
    const auto common = manifest.cardEssence();
    return DetailedReport(common, language).document(manifest);
}

std::string renderNode(const ReportNode& node, const ClipEssence& common, AppLanguage language,
                       int depth) {
    HtmlText text;
    DetailedReport(common, language).renderNode(text, node, depth);
    return text.take();
}

} // namespace slatewise::SessionDetailedHTML
