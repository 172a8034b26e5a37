#include "Reports/SessionPDF.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Offload/ReportNames.h"
#include "Offload/TimecodeFormat.h"
#include "Platform/AppInfo.h"
#include "Reports/PdfProblems.h"
#include "Reports/PdfReport.h"
#include "Reports/ReportLogo.h"
#include "Reports/ReportText.h"

#include <algorithm>
#include <cmath>

namespace slatewise::SessionPDF {

namespace {

using namespace PdfReport;

constexpr std::string_view kName = ReportNames::standard;

constexpr double kTableLeft = 8;
constexpr double kTableWidth = 826;
constexpr double kTableRight = kTableLeft + kTableWidth;
constexpr double kHeadHeight = 13;
constexpr double kRowHeight = 18;
constexpr double kHeaderTop = 587;
/// What the texts above the table take.
constexpr double kFirstHeaderHeight = 62;
constexpr double kLaterHeaderHeight = 22;
constexpr double kFootHeight = 28;
/// Later pages keep less between header and table than the room that the paging sets aside.
constexpr double kLaterTableTop = 573;
constexpr double kBottomMargin = 8;
constexpr TextColumn kTextColumn = {.left = 10, .width = 822};
constexpr double kRuleWidth = 0.35;
/// From the table's lower edge to that of the foot.
constexpr double kFootDistance = 16;
constexpr double kLogoSize = 14;
/// Baselines of the two lines of a size, from the middle of its row.
constexpr double kUpperLine = 1;
constexpr double kLowerLine = -6.1;

constexpr PdfColor kSecondary = PdfColor::grey(0.45);
constexpr PdfColor kRule = PdfColor::grey(0.72);

enum Column : std::size_t {
    Name,
    Size,
    Action,
    Verify,
    Timecode,
    Duration,
    Rates,
    DropFrame,
    Hash
};

double headerHeight(bool first) {
    return first ? kFirstHeaderHeight : kLaterHeaderHeight;
}

std::size_t rowsPerPage(bool first) {
    const double room =
        kHeaderTop - headerHeight(first) - kBottomMargin - kFootHeight - kHeadHeight;
    return std::max<std::size_t>(1, static_cast<std::size_t>(room / kRowHeight));
}

std::size_t pagesFor(std::size_t rows) {
    const auto onFirst = std::min(rows, rowsPerPage(true));
    const auto perLater = rowsPerPage(false);
    return 1 + (rows - onFirst + perLater - 1) / perLater;
}

std::string dropFrameText(const std::optional<bool>& isDropFrame) {
    if (!isDropFrame)
        return std::string(TimecodeFormat::missing);
    return *isDropFrame ? "DF" : "NDF";
}

void describeFile(const ManifestFile& file, AppLanguage language, Row& row) {
    const auto rates = TimecodeFormat::capTC(file.media->captureFps, file.media->timecodeRate);
    row.action = rawValue(file.action);
    row.verify = rawValue(file.verifyStatus);
    row.fate = file.verifyStatus;
    row.tc = TimecodeFormat::range(file.media->timecodeStart, file.media->timecodeEnd);
    row.dur = displayDuration(file);
    row.fps = ReportText::number(rates.text, language);
    row.fpsMismatch = rates.mismatch;
    row.df = dropFrameText(file.media->timecodeDropFrame);
    row.hash = file.sourceSHA256.value_or(std::string(TimecodeFormat::missing));
}

Row describe(const ReportNode& node, const L10n& l10n, int depth) {
    const auto bytes = node.isDirectory() ? node.totalBytes : node.file->sizeBytes;
    Row row;
    row.depth = depth;
    row.folder = node.isDirectory();
    row.name = node.name;
    row.sizeHuman = PathSize::format(bytes, l10n.language());
    row.sizeBytes = PathSize::grouped(bytes, l10n.language());
    if (node.isDirectory()) {
        row.action = l10n.fileCount(node.fileCount);
        row.tc = row.dur = row.fps = row.df = TimecodeFormat::missing;
    } else {
        describeFile(*node.file, l10n.language(), row);
    }
    return row;
}

std::vector<Row> describe(std::span<const ReportTree::Line> lines, const L10n& l10n) {
    std::vector<Row> rows;
    rows.reserve(lines.size());
    for (const auto& line : lines)
        rows.push_back(describe(*line.node, l10n, line.depth));
    return rows;
}

/// Draws the table of one page from its upper edge down.
class Table {
public:
    Table(PdfCanvas& canvas, const Widths& widths, double top, std::size_t rowCount)
        : canvas_(canvas), widths_(widths), top_(top),
          bottom_(top - kHeadHeight - kRowHeight * static_cast<double>(rowCount)) {}

    double bottom() const { return bottom_; }

    void drawFrame() {
        canvas_.fill({kTableLeft, top_ - kHeadHeight, kTableWidth, kHeadHeight}, headFill);
        std::vector<PdfLine> lines;
        for (std::size_t column = 1; column < widths_.size(); ++column) {
            const double x = colX(column, widths_);
            lines.push_back({x, top_, x, bottom_});
        }
        const double first = top_ - kHeadHeight;
        const auto rows = std::ceil((first - bottom_ - kRuleWidth) / kRowHeight);
        for (int row = 0; row < rows; ++row) {
            const double y = first - row * kRowHeight;
            lines.push_back({kTableLeft, y, kTableRight, y});
        }
        canvas_.stroke(lines, kRule, kRuleWidth);
        canvas_.stroke({kTableLeft, bottom_, kTableWidth, top_ - bottom_}, kRule, kRuleWidth);
    }

    void drawHead(const L10n& l10n) {
        const std::array<L10n::Text, 9> titles = {
            l10n.colName(),   l10n.reportSize(),  l10n.colAction(),
            l10n.colVerify(), l10n.colTimecode(), l10n.colDuration(),
            l10n.colCapTC(),  l10n.colDF(),       "SHA-256",
        };
        constexpr double kFontSize = 6.5;
        const double baseline = centredBaseline(top_ - kHeadHeight / 2, kFontSize);
        for (std::size_t column = 0; column < titles.size(); ++column) {
            auto place = cell(column, baseline);
            place.alignment = column == Name ? TextAlignment::Left : TextAlignment::Right;
            canvas_.draw(titles[column], place, system(kFontSize, FontWeight::Semibold, mainText));
        }
    }

    void drawRow(std::size_t index, const Row& row) {
        constexpr double kFontSize = 7;
        constexpr double kBytesFontSize = 6;
        constexpr double kHashFontSize = 6.8;
        constexpr auto kDigits = digits(kFontSize, FontWeight::Regular, mainText);
        const double middle = top_ - kHeadHeight - kRowHeight * (static_cast<double>(index) + 0.5);
        const double baseline = centredBaseline(middle, kFontSize);

        drawName(row, baseline);
        canvas_.draw(row.sizeHuman, cell(Size, middle + kUpperLine),
                     system(kFontSize, FontWeight::Medium, mainText));
        canvas_.draw(row.sizeBytes, cell(Size, middle + kLowerLine),
                     digits(kBytesFontSize, FontWeight::Regular, kSecondary));
        drawFate(row, middle);
        canvas_.draw(row.tc, cell(Timecode, baseline), kDigits);
        canvas_.draw(row.dur, cell(Duration, baseline), kDigits);
        canvas_.draw(
            row.fps, cell(Rates, baseline),
            digits(kFontSize, FontWeight::Regular, row.fpsMismatch ? rateMismatch : mainText));
        canvas_.draw(row.df, cell(DropFrame, baseline), kDigits);
        canvas_.draw(row.hash, cell(Hash, baseline), monospaced(kHashFontSize, mainText));
    }

private:
    TextPlace cell(std::size_t column, double baseline) const {
        return {.left = colX(column, widths_) + cellInset,
                .width = widths_[column] - 2 * cellInset,
                .baseline = baseline,
                .alignment = TextAlignment::Right,
                .fit = TextFit::NarrowThenCut};
    }

    /// A word that has no room is set on two lines, never cut: "copied_" and "unverified".
    void drawFate(const Row& row, double middle) {
        const auto plain = system(7, FontWeight::Regular, mainText);
        const auto style = row.fate ? system(7, weightOf(*row.fate), colorOf(*row.fate)) : plain;
        // What was done is as loud as what became of it, and no more than read where all went well.
        const bool isAlarm = style.face.weight == FontWeight::Bold;
        canvas_.draw(row.action, cell(Action, centredBaseline(middle, style.size)),
                     isAlarm ? style : plain);
        const auto end = row.verify.find('_');
        if (end == std::string::npos) {
            canvas_.draw(row.verify, cell(Verify, centredBaseline(middle, style.size)), style);
            return;
        }
        const auto word = std::string_view(row.verify);
        canvas_.draw(word.substr(0, end + 1), cell(Verify, middle + kUpperLine), style);
        canvas_.draw(word.substr(end + 1), cell(Verify, middle + kLowerLine), style);
    }

    void drawName(const Row& row, double baseline) {
        constexpr double kFontSize = 7;
        const double inset = nameInset(row.depth, widths_[Name]);
        canvas_.draw(row.name,
                     {.left = kTableLeft + inset,
                      .width = widths_[Name] - inset - cellInset,
                      .baseline = baseline},
                     row.folder ? system(kFontSize, FontWeight::Semibold, accent)
                                : system(kFontSize, FontWeight::Regular, mainText));
    }

    PdfCanvas& canvas_;
    const Widths& widths_;
    double top_;
    double bottom_;
};

void drawFirstHeader(const SessionManifest& manifest, const PageNumber& page, const L10n& l10n,
                     PdfCanvas& canvas) {
    const auto line = [&](std::string_view text, double top, const TextStyle& style) {
        drawLine(canvas, text, kTextColumn, top, style);
    };
    drawVerdict(canvas, manifest, page, l10n, kHeaderTop);
    drawTotals(canvas, manifest, l10n, 537);
    line(l10n.reportTitle(), kHeaderTop, system(13, FontWeight::Bold, mainText));
    line(ReportText::dateTime(manifest.startedAt, l10n.language()), 571,
         system(8, FontWeight::Regular, kSecondary));
    line(sessionLine(kName, manifest, l10n), 559, digits(8, FontWeight::Medium, kSecondary));
    drawRoute(canvas, manifest, kTextColumn, 548, system(8.5, FontWeight::Semibold, mainText));
    line(countsLine(manifest, l10n), 537, system(8, FontWeight::Regular, mainText));
}

void drawLaterHeader(const L10n& l10n, PdfCanvas& canvas) {
    drawLine(canvas, l10n.reportContinued(), kTextColumn, kHeaderTop,
             system(9, FontWeight::Semibold, mainText));
}

void drawFoot(PdfCanvas& canvas, const PageNumber& page, double tableBottom) {
    constexpr double kFontSize = 7;
    constexpr double kTextBesideLogo = 28;
    const double bottom = tableBottom - kFootDistance;
    const double baseline = centredBaseline(bottom + kLogoSize / 2, kFontSize);
    const auto* logo = ReportLogo::image();
    if (logo)
        canvas.draw(*logo, {kTableLeft, bottom, kLogoSize, kLogoSize});
    drawPageNumber(canvas, page, baseline, system(kFontSize, FontWeight::Medium, kSecondary));
    canvas.draw(
        programLine(),
        {.left = logo ? kTextBesideLogo : kTextColumn.left, .width = 216, .baseline = baseline},
        system(kFontSize, FontWeight::Regular, kSecondary));
    canvas.draw(
        AppInfo::linkText(AppInfo::websiteURL),
        {.left = 706, .width = 126, .baseline = baseline, .alignment = TextAlignment::Right},
        system(kFontSize, FontWeight::Medium, accent));
}

} // namespace

void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language) {
    PdfReport::write(manifest, file, language, [&](PdfCanvas& canvas) {
        // Only one page's rows are held as texts.
        const auto lines = ReportTree::lines(tree);
        const L10n l10n(language);
        const auto widths = columnWidths();
        std::span<const ReportTree::Line> rest = lines;
        const auto problems = problemPages(canvas, manifest, l10n, kTextColumn.width);
        auto page = firstPage(pagesFor(lines.size()), problems.size());
        do {
            const auto count = std::min(rest.size(), rowsPerPage(page.number == 1));
            canvas.beginPage();
            drawPage(manifest, describe(rest.first(count), l10n), widths, page, language, canvas);
            canvas.endPage();
            rest = rest.subspan(count);
            ++page.number;
        } while (!rest.empty());
        drawProblemPages(
            canvas, problems, kTextColumn, kLaterTableTop, page,
            [&] { drawLaterHeader(l10n, canvas); },
            [&](double bottom) { drawFoot(canvas, page, bottom); });
    });
}

std::vector<Row> flatten(std::span<const ReportNode> nodes, AppLanguage language, int depth) {
    return describe(ReportTree::lines(nodes, depth), L10n(language));
}

Widths columnWidths() {
    Widths widths = {124, 86, 36, 42, 108, 60, 44, 24, 0};
    giveRestToLast(widths, kTableWidth);
    return widths;
}

double colX(std::size_t column, const Widths& widths) {
    return columnLeft(column, widths, kTableLeft);
}

void drawPage(const SessionManifest& manifest, std::span<const Row> rows, const Widths& widths,
              const PageNumber& page, AppLanguage language, PdfCanvas& canvas) {
    const bool first = page.number == 1;
    const L10n l10n(language);
    if (first)
        drawFirstHeader(manifest, page, l10n, canvas);
    else
        drawLaterHeader(l10n, canvas);
    Table table(canvas, widths, first ? kHeaderTop - kFirstHeaderHeight : kLaterTableTop,
                std::max<std::size_t>(1, rows.size()));
    table.drawFrame();
    table.drawHead(l10n);
    for (std::size_t index = 0; index < rows.size(); ++index)
        table.drawRow(index, rows[index]);
    drawFoot(canvas, page, table.bottom());
}

} // namespace slatewise::SessionPDF
