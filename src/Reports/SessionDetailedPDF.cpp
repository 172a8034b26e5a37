#include "Reports/SessionDetailedPDF.h"

#include "Language/L10n.h"
#include "Offload/ReportNames.h"
#include "Platform/AppInfo.h"
#include "Reports/PdfProblems.h"
#include "Reports/ReportText.h"

#include <fmt/format.h>

#include <algorithm>

namespace slatewise::SessionDetailedPDF {

namespace {

using namespace PdfReport;

constexpr std::string_view kName = ReportNames::detailed;

constexpr double kTableLeft = 7;
constexpr double kTableWidth = 828;
constexpr double kTableRight = kTableLeft + kTableWidth;
constexpr double kHeadHeight = 12;
constexpr double kFirstTableTop = 500;
constexpr double kLaterTableTop = 558;
/// What the rows of a page may take.
constexpr double kFirstBudget = 455;
constexpr double kLaterBudget = 531;
constexpr TextColumn kTextColumn = {.left = 9, .width = 824};
constexpr double kFrameWidth = 0.4;
constexpr double kRuleWidth = 0.3;
constexpr double kBannerTopInset = 3;
constexpr double kBannerNameHeight = 12;

constexpr PdfColor kSecondary = PdfColor::grey(0.42);
constexpr PdfColor kRule = PdfColor::grey(0.78);
constexpr PdfColor kBannerFill = {0.96, 0.94, 1};
constexpr PdfColor kBannerFrame = {0.81, 0.76, 1};

enum Column : std::size_t { Name, Size, Clip, Timing, Status, Hash };

/// How many rows of these heights one page takes: as many as have room, and at least one.
std::size_t rowsOnPage(std::span<const double> heights, bool first) {
    const double budget = first ? kFirstBudget : kLaterBudget;
    // Heights are sums of tenths, which add up to a whole a little above or below it.
    constexpr double kRounding = 1e-6;
    double sum = 0;
    std::size_t count = 0;
    for (const double height : heights) {
        sum += height;
        if (count > 0 && sum > budget + kRounding)
            break;
        ++count;
    }
    return count;
}

/// How many rows each page takes.
std::vector<std::size_t> paged(std::span<const double> heights) {
    std::vector<std::size_t> pages;
    while (!heights.empty()) {
        pages.push_back(rowsOnPage(heights, pages.empty()));
        heights = heights.subspan(pages.back());
    }
    return pages;
}

/// Draws the table of one page from its upper edge down.
class Table {
public:
    Table(PdfCanvas& canvas, const Widths& widths, double top)
        : canvas_(canvas), widths_(widths), top_(top), bottom_(top - kHeadHeight) {}

    double bottom() const { return bottom_; }

    void drawHead(const L10n& l10n) {
        canvas_.fill({kTableLeft, bottom_, kTableWidth, kHeadHeight}, headFill);
        constexpr double kFontSize = 6.2;
        const std::array<L10n::Text, 6> titles = {l10n.colName(),   l10n.reportSize(),
                                                  l10n.colClip(),   l10n.colTiming(),
                                                  l10n.colVerify(), "SHA-256"};
        for (std::size_t column = 0; column < titles.size(); ++column)
            canvas_.draw(titles[column],
                         cell(column, centredBaseline(top_ - kHeadHeight / 2, kFontSize)),
                         system(kFontSize, FontWeight::Semibold, mainText));
        ruleBelow();
    }

    void drawRow(const Row& row) {
        const double height = row.height();
        if (row.banner)
            drawBanner(row, height);
        else
            drawCells(row, height);
        bottom_ -= height;
        ruleBelow();
    }

    void drawFrame() {
        canvas_.stroke(rules_, kRule, kRuleWidth);
        canvas_.stroke({kTableLeft, bottom_, kTableWidth, top_ - bottom_}, kRule, kFrameWidth);
        if (banner_.height > 0)
            canvas_.stroke(banner_, kBannerFrame, kFrameWidth);
    }

private:
    /// Where the cell's line stands; sizes line up at the right, all else at the left.
    TextPlace cell(std::size_t column, double baseline) const {
        return {.left = colX(column, widths_) + cellInset,
                .width = widths_[column] - 2 * cellInset,
                .baseline = baseline,
                .alignment = column == Size ? TextAlignment::Right : TextAlignment::Left,
                .fit = TextFit::NarrowThenCut};
    }

    /// The baseline of one line of the row that begins at `bottom_`; the first has number 0. All
    /// cells share them, whatever their fonts' sizes.
    double baselineOf(std::size_t line) const {
        constexpr double kFontSize = 6.6;
        return centredBaseline(
            bottom_ - rowPadding / 2 - lineHeight * (static_cast<double>(line) + 0.5), kFontSize);
    }

    void drawBanner(const Row& row, double height) {
        banner_ = {kTableLeft, bottom_ - height, kTableWidth, height};
        canvas_.fill(banner_, kBannerFill);
        double top = bottom_ - kBannerTopInset;
        drawLine(canvas_, row.name, kTextColumn, top, system(8.5, FontWeight::Semibold, mainText));
        top -= kBannerNameHeight;
        constexpr auto kFacts = system(6.4, FontWeight::Regular, mainText);
        for (const auto& line : canvas_.wrapped(row.bannerFacts, kFacts, kTextColumn.width,
                                                static_cast<std::size_t>(row.lines - 1))) {
            drawLine(canvas_, line, kTextColumn, top, kFacts);
            top -= bannerLineHeight;
        }
    }

    void drawCells(const Row& row, double height) {
        drawName(row);
        canvas_.draw(row.sizeHuman, cell(Size, baselineOf(0)),
                     system(6.6, FontWeight::Regular, mainText));
        canvas_.draw(row.sizeBytes, cell(Size, baselineOf(1)),
                     digits(6.2, FontWeight::Regular, kSecondary));
        drawLines(row.clip, Clip, system(6.5, FontWeight::Regular, mainText));
        drawLines(row.timing, Timing,
                  digits(6.5, FontWeight::Regular, row.fpsMismatch ? rateMismatch : mainText));
        drawLines(row.status, Status,
                  row.fate ? system(6.4, weightOf(*row.fate), colorOf(*row.fate))
                           : system(6.4, FontWeight::Regular, mainText));
        canvas_.draw(row.hash, cell(Hash, baselineOf(0)), monospaced(5.6, mainText));
        for (std::size_t column = 1; column < widths_.size(); ++column) {
            const double x = colX(column, widths_);
            rules_.push_back({x, bottom_, x, bottom_ - height});
        }
    }

    void drawName(const Row& row) {
        const double inset = nameInset(row.depth, widths_[Name]);
        auto place = cell(Name, 0);
        place.left = kTableLeft + inset;
        place.width = widths_[Name] - inset - cellInset;
        place.fit = TextFit::Cut;
        const auto style = row.folder ? system(6.6, FontWeight::Semibold, accent)
                                      : system(6.6, FontWeight::Medium, mainText);
        // The date needs the last line of those that the row has.
        const auto room =
            static_cast<std::size_t>(row.nameStamp.empty() ? row.lines : row.lines - 1);
        const auto next = drawLinesAt(place, row.name, room, style);
        place.baseline = baselineOf(next);
        canvas_.draw(row.nameStamp, place, digits(5.2, FontWeight::Regular, kSecondary));
    }

    void drawLines(std::string_view text, std::size_t column, const TextStyle& style) {
        drawLinesAt(cell(column, 0), text, std::string_view::npos, style);
    }

    /// Draws at most `room` lines and gives the number of the line below them.
    std::size_t drawLinesAt(TextPlace place, std::string_view text, std::size_t room,
                            const TextStyle& style) {
        std::size_t line = 0;
        while (!text.empty() && line < room) {
            const auto end = line + 1 < room ? std::min(text.find('\n'), text.size()) : text.size();
            place.baseline = baselineOf(line++);
            canvas_.draw(text.substr(0, end), place, style);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return line;
    }

    void ruleBelow() { rules_.push_back({kTableLeft, bottom_, kTableRight, bottom_}); }

    PdfCanvas& canvas_;
    const Widths& widths_;
    double top_;
    /// The lower edge of what is drawn so far.
    double bottom_;
    std::vector<PdfLine> rules_;
    PdfRectangle banner_;
};

void drawFirstHeader(const SessionManifest& manifest, const PageNumber& page, const L10n& l10n,
                     PdfCanvas& canvas) {
    const auto line = [&](std::string_view text, double top, const TextStyle& style) {
        drawLine(canvas, text, kTextColumn, top, style);
    };
    drawVerdict(canvas, manifest, page, l10n, 588);
    drawTotals(canvas, manifest, l10n, 517);
    line(l10n.reportTitle(), 588, system(20, FontWeight::Bold, mainText));
    line(ReportText::dateTime(manifest.startedAt, l10n.language()), 562,
         system(9, FontWeight::Regular, kSecondary));
    line(sessionLine(kName, manifest, l10n), 549, system(8, FontWeight::Semibold, mainText));
    constexpr double kRouteLineHeight = 9;
    drawWrappedRoute(canvas, manifest, kTextColumn, 536, kRouteLineHeight, 2,
                     system(8, FontWeight::Medium, mainText));
    line(countsLine(manifest, l10n), 517, system(8, FontWeight::Regular, mainText));
}

void drawLaterHeader(const L10n& l10n, PdfCanvas& canvas) {
    drawLine(canvas, l10n.reportContinued(), kTextColumn, 589,
             system(8, FontWeight::Semibold, mainText));
    drawLine(canvas, kName, kTextColumn, 573, system(8, FontWeight::Regular, kSecondary));
}

void drawFoot(PdfCanvas& canvas, const PageNumber& page, double tableBottom) {
    constexpr double kFontSize = 6.5;
    constexpr double kHeight = 10;
    constexpr double kDistance = 14;
    constexpr double kLowest = 3;
    const double bottom = std::max(kLowest, tableBottom - kDistance);
    const double baseline = centredBaseline(bottom + kHeight / 2, kFontSize);
    drawPageNumber(canvas, page, baseline, system(kFontSize, FontWeight::Medium, kSecondary));
    canvas.draw(fmt::format("{}  ·  {}", programLine(), kName),
                {.left = kTextColumn.left, .width = 316, .baseline = baseline},
                system(kFontSize, FontWeight::Regular, kSecondary));
    canvas.draw(
        AppInfo::linkText(AppInfo::websiteURL),
        {.left = 707, .width = 126, .baseline = baseline, .alignment = TextAlignment::Right},
        system(kFontSize, FontWeight::Medium, accent));
}

} // namespace

void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language) {
    PdfReport::write(manifest, file, language, [&](PdfCanvas& canvas) {
        // The texts of all rows at once would take more room than all else: those that the heights
        // depend on are made first, and all of them page by page.
        const auto common = manifest.cardEssence();
        const Describer rowOf{common, manifest.card.name, L10n(language)};
        const auto lines = linesOf(tree, 0);
        std::vector<double> heights;
        heights.reserve(lines.size());
        for (const auto& line : lines)
            heights.push_back(rowOf.heightOf(line));
        const auto widths = columnWidths();
        const auto pages = paged(heights);
        std::span<const Line> rest = lines;
        const auto problems = problemPages(canvas, manifest, rowOf.l10n, kTextColumn.width);
        auto page = firstPage(pages.size(), problems.size());
        for (const auto count : pages) {
            canvas.beginPage();
            drawPage(manifest, rowOf(rest.first(count)), widths, page, language, canvas);
            canvas.endPage();
            rest = rest.subspan(count);
            ++page.number;
        }
        drawProblemPages(
            canvas, problems, kTextColumn, kLaterTableTop, page,
            [&] { drawLaterHeader(rowOf.l10n, canvas); },
            [&](double bottom) { drawFoot(canvas, page, bottom); });
    });
}

Widths columnWidths() {
    Widths widths = {128, 72, 118, 132, 52, 0};
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
    Table table(canvas, widths, first ? kFirstTableTop : kLaterTableTop);
    table.drawHead(l10n);
    for (const auto& row : rows)
        table.drawRow(row);
    table.drawFrame();
    drawFoot(canvas, page, table.bottom());
}

} // namespace slatewise::SessionDetailedPDF
