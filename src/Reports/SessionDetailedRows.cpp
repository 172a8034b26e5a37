#include "Reports/SessionDetailedRows.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Offload/TimecodeFormat.h"
#include "Platform/Text.h"
#include "Reports/EssenceText.h"
#include "Reports/ReportText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace slatewise::SessionDetailedPDF {

namespace {

constexpr double kLowestRow = 22;
constexpr double kBannerPadding = 22;
/// A facts line of more characters gets a further line.
constexpr std::size_t kFactsPerLine = 140;
/// A file has a name, a date and two sizes to show even when nothing is known of the clip.
constexpr int kLeastFileLines = 3;

int lineCount(std::string_view text) {
    return 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

std::string onLines(const std::vector<std::string>& lines) {
    return fmt::format("{}", fmt::join(lines, "\n"));
}

std::string statusText(const ManifestFile& file) {
    return std::string(rawValue(file.action)) + "\n" + std::string(rawValue(file.verifyStatus));
}

Row describeCard(const ClipEssence& common, const std::string& cardName, AppLanguage language) {
    Row row;
    row.folder = row.banner = true;
    row.name = cardName;
    row.bannerFacts = ReportText::cardFactsLine(common, language);
    const auto length = Text::length(row.bannerFacts);
    row.lines = 1 + static_cast<int>((length + kFactsPerLine - 1) / kFactsPerLine);
    return row;
}

/// The texts that give a row its height; `describe` adds those that always have room in it.
Row outline(const ReportNode& node, const ClipEssence& common, const L10n& l10n, int depth) {
    Row row;
    row.depth = depth;
    row.folder = node.isDirectory();
    // A name is one line whatever it holds.
    row.name = Text::visible(node.name);
    if (node.isDirectory()) {
        row.clip = row.status = l10n.fileCount(node.fileCount);
    } else {
        if (node.file->media->essence)
            row.clip = onLines(
                EssenceText::clipLines(*node.file->media->essence, common, l10n.language()));
        row.timing = onLines(ReportText::timingLines(*node.file, l10n.language()));
        row.status = statusText(*node.file);
    }
    row.lines = std::max({lineCount(row.name), lineCount(row.clip), lineCount(row.timing),
                          lineCount(row.status), node.isDirectory() ? 1 : kLeastFileLines});
    return row;
}

void addFileFacts(const ManifestFile& file, Row& row) {
    row.fate = file.verifyStatus;
    row.hash = file.sourceSHA256.value_or("");
    row.fpsMismatch =
        TimecodeFormat::capTC(file.media->captureFps, file.media->timecodeRate).mismatch;
    if (file.mtime)
        row.nameStamp = ReportText::fileModified(*file.mtime);
}

Row describe(const ReportNode& node, const ClipEssence& common, const L10n& l10n, int depth) {
    const auto bytes = node.isDirectory() ? node.totalBytes : node.file->sizeBytes;
    auto row = outline(node, common, l10n, depth);
    row.sizeHuman = PathSize::format(bytes, l10n.language());
    row.sizeBytes = PathSize::grouped(bytes, l10n.language());
    if (!node.isDirectory())
        addFileFacts(*node.file, row);
    return row;
}

} // namespace

double Row::height() const {
    if (banner)
        return std::max(kLowestRow, (lines - 1) * bannerLineHeight + kBannerPadding);
    return std::max(kLowestRow, lines * lineHeight + rowPadding);
}

std::vector<Line> linesOf(std::span<const ReportNode> nodes, int depth) {
    auto lines = ReportTree::lines(nodes, depth);
    if (depth == 0)
        lines.insert(lines.begin(), Line{nullptr, depth});
    return lines;
}

Row Describer::operator()(const Line& line) const {
    return line.node ? describe(*line.node, common, l10n, line.depth)
                     : describeCard(common, cardName, l10n.language());
}

std::vector<Row> Describer::operator()(std::span<const Line> lines) const {
    std::vector<Row> rows;
    rows.reserve(lines.size());
    for (const auto& line : lines)
        rows.push_back((*this)(line));
    return rows;
}

double Describer::heightOf(const Line& line) const {
    return line.node ? outline(*line.node, common, l10n, line.depth).height()
                     : (*this)(line).height();
}

std::vector<Row> flatten(std::span<const ReportNode> nodes, const ClipEssence& common,
                         const std::string& cardName, AppLanguage language, int depth) {
    return Describer{common, cardName, L10n(language)}(linesOf(nodes, depth));
}

} // namespace slatewise::SessionDetailedPDF
