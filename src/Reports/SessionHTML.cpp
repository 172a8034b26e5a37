#include "Reports/SessionHTML.h"

#include "Language/L10n.h"
#include "Offload/ReportNames.h"
#include "Offload/TimecodeFormat.h"
#include "Platform/Files/FileSystem.h"
#include "Reports/HtmlReport.h"
#include "Reports/HtmlStyle.h"
#include "Reports/ReportText.h"

namespace slatewise::SessionHTML {

namespace {

constexpr std::string_view kNothing = "—";

/// How far each level of folders moves a file's name to the right, in pixels.
constexpr int kIndent = 36;
constexpr int kMargin = 8;

std::string_view dropFrameText(const std::optional<bool>& isDropFrame) {
    if (!isDropFrame)
        return kNothing;
    return *isDropFrame ? "DF" : "NDF";
}

std::string_view rateClass(bool isMismatch, bool hasTimecode) {
    if (isMismatch)
        return "fps mismatch";
    return hasTimecode ? "fps" : "muted";
}

void cell(HtmlText& page, std::string_view styleClass, std::string_view value) {
    page.raw("<span class=\"").raw(styleClass).raw("\">").escaped(value).raw("</span>");
}

class StandardReport : public HtmlReport {
public:
    using HtmlReport::HtmlReport;

protected:
    std::string_view name() const override { return ReportNames::standard; }
    std::string_view style() const override { return HtmlStyle::standard; }

    std::vector<L10n::Text> columnTitles() const override {
        return {l10n().colName(),   l10n().reportSize(),  l10n().colAction(),
                l10n().colVerify(), l10n().colTimecode(), l10n().colDuration(),
                l10n().colCapTC(),  l10n().colDF(),       "SHA-256"};
    }

    void renderHead(HtmlText& page, const SessionManifest&) const override {
        page.raw(R"(<div class="heads"><div class="head">)");
        std::string_view opening = "<span class=\"n\">";
        for (const auto title : columnTitles()) {
            page.raw(opening).escaped(title).raw("</span>");
            opening = "<span>";
        }
        page.raw("</div></div>\n");
    }

    void renderFolderCells(HtmlText& page, const ReportNode& folder) const override {
        page.raw("<span>").escaped(l10n().fileCount(folder.fileCount)).raw("</span><span></span>");
        for (int column = 0; column < 4; ++column)
            page.raw("<span class=\"muted\">—</span>");
        page.raw("<span></span>");
    }

    void renderFile(HtmlText& page, const ReportNode& node, int depth) const override {
        const auto& file = *node.file;
        page.raw(R"(<li><div class="file row" style="--d:)")
            .number(depth)
            .raw("\" title=\"")
            .raw(file.mtime ? Clock::iso8601(*file.mtime) : "")
            .raw(R"("><span class="name" style="padding-left:)")
            .number(depth * kIndent + kMargin)
            .raw(R"(px"><span class="label">)")
            .escaped(node.name)
            .raw("</span></span>");
        sizeCell(page, file.sizeBytes);
        renderFate(page, file);
        renderTiming(page, file);
        const auto hash = file.sourceSHA256.value_or("");
        page.raw(R"(<span class="hash" title=")")
            .escaped(hash)
            .raw("\">")
            .escaped(hash)
            .raw("</span>\n</div></li>");
    }

private:
    static void renderFate(HtmlText& page, const ManifestFile& file) {
        const auto style = styleOf(file.verifyStatus);
        const bool isAsWished = style != "alarm" && file.action != RowAction::Fail;
        page.raw("<span class=\"").raw(isAsWished ? style == "skip" ? "skip" : "" : "alarm");
        page.raw("\">").raw(rawValue(file.action)).raw("</span><span class=\"").raw(style);
        page.raw("\">");
        statusWords(page, rawValue(file.verifyStatus));
        page.raw("</span>");
    }

    void renderTiming(HtmlText& page, const ManifestFile& file) const {
        const auto range =
            TimecodeFormat::range(file.media->timecodeStart, file.media->timecodeEnd);
        const bool hasTimecode = range != kNothing;
        const auto rates = TimecodeFormat::capTC(file.media->captureFps, file.media->timecodeRate);
        cell(page, hasTimecode ? "tc" : "muted", range);
        cell(page, hasTimecode ? "dur" : "muted", displayDuration(file));
        cell(page, rateClass(rates.mismatch, hasTimecode),
             ReportText::number(rates.text, l10n().language()));
        cell(page, hasTimecode ? "df" : "muted", dropFrameText(file.media->timecodeDropFrame));
    }
};

} // namespace

void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language) {
    StandardReport(language).write(manifest, tree, file);
}

std::string document(const SessionManifest& manifest, AppLanguage language) {
    return StandardReport(language).document(manifest);
}

std::string renderNode(const ReportNode& node, AppLanguage language, int depth) {
    HtmlText text;
    StandardReport(language).renderNode(text, node, depth);
    return text.take();
}

} // namespace slatewise::SessionHTML
