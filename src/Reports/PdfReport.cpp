#include "Reports/PdfReport.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Reports/PdfProblems.h"
#include "Reports/SessionSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace slatewise::PdfReport {

namespace {

constexpr std::string_view kSeparator = "  ·  ";
constexpr std::string_view kArrow = "→";
constexpr std::string_view kArrowBetween = "  →  ";

/// From the upper edge of a line's box down to its baseline, as a part of the font's size.
constexpr double kAscent = 0.95;
constexpr double kCapitalHeight = 0.727;

constexpr TextColumn kRightHalf = {.left = 424, .width = 410};

constexpr PdfColor kWhite = PdfColor::grey(1);
constexpr PdfColor kGrey = PdfColor::grey(0.45);
constexpr PdfColor kGreen = {0.09, 0.44, 0.23};
constexpr PdfColor kBlue = {0.09, 0.36, 0.83};
constexpr PdfColor kRed = {0.71, 0.14, 0.09};

/// There is no document. `what()` keeps the cause.
class PdfError : public Error {
public:
    PdfError(AppLanguage language, const Error& cause) : Error(cause.what()), language_(language) {}

    std::string localizedDescription() const override {
        return std::string(L10n(language_).pdfFailed());
    }

private:
    AppLanguage language_;
};

PdfCanvas open(const SessionManifest& manifest, const FileBeneath& file, AppLanguage language) {
    const auto title = std::string(L10n(language).reportTitle()) + " — " + manifest.card.name;
    try {
        return PdfCanvas(file, {.pageWidth = pageWidth,
                                .pageHeight = pageHeight,
                                .title = title,
                                .producer = programLine(),
                                .language = std::string(Language::rawValue(language)),
                                .created = manifest.finishedAt});
    } catch (const Error& failure) {
        throw PdfError(language, failure);
    }
}

/// Draws the text and gives where the next one begins.
double drawPart(PdfCanvas& canvas, std::string_view text, const TextPlace& place,
                const TextStyle& style) {
    canvas.draw(text, place, style);
    return place.left + std::min(canvas.width(text, style), place.width);
}

TextPlace lineAt(const TextColumn& column, double top, const TextStyle& style) {
    return {.left = column.left, .width = column.width, .baseline = top - kAscent * style.size};
}

/// When not all has room, what stands behind the arrow gets at most half of it.
void drawAroundArrow(PdfCanvas& canvas, std::string_view before, std::string_view arrow,
                     std::string_view after, TextPlace place, const TextStyle& style) {
    const double end = place.left + place.width;
    auto arrowStyle = style;
    arrowStyle.color = accent;
    const double wanted = canvas.width(after, style) + canvas.width(arrow, style);
    place.width -= std::min(wanted, place.width / 2);
    place.left = drawPart(canvas, before, place, style);
    place.width = end - place.left;
    place.left = drawPart(canvas, arrow, place, arrowStyle);
    place.width = end - place.left;
    canvas.draw(after, place, style);
}

/// Start and end have their room always; what names the session takes what they leave.
void drawIdentity(PdfCanvas& canvas, const SessionSummary& summary, double top) {
    constexpr auto kFacts = system(6.8, FontWeight::Regular, mainText);
    const auto times = std::string(kSeparator) + onOneLine(summary.times);
    auto place = lineAt(kRightHalf, top, kFacts);
    place.fit = TextFit::NarrowThenCut;
    const double end = place.left + place.width;
    place.width -= canvas.width(times, kFacts);
    place.left = drawPart(canvas, onOneLine(summary.identity), place, kFacts);
    place.width = end - place.left;
    canvas.draw(times, place, kFacts);
}

} // namespace

void write(const SessionManifest& manifest, const FileBeneath& file, AppLanguage language,
           const std::function<void(PdfCanvas&)>& draw) {
    // First of all: why an old file cannot go is told as the disk says it.
    file.folder.removeFile(file.relative);
    auto canvas = open(manifest, file, language);
    try {
        draw(canvas);
        canvas.finish();
    } catch (const PosixError&) {
        throw;
    } catch (const Error& failure) {
        throw PdfError(language, failure);
    }
}

void drawLine(PdfCanvas& canvas, std::string_view text, const TextColumn& column, double top,
              const TextStyle& style) {
    canvas.draw(text, lineAt(column, top, style), style);
}

void drawRoute(PdfCanvas& canvas, const SessionManifest& manifest, const TextColumn& column,
               double top, const TextStyle& style) {
    if (manifest.wasHashing())
        return drawLine(canvas, manifest.card.mountPoint, column, top, style);
    drawAroundArrow(canvas, manifest.card.mountPoint, kArrowBetween,
                    manifest.destination.sessionRoot, lineAt(column, top, style), style);
}

void drawWrappedRoute(PdfCanvas& canvas, const SessionManifest& manifest, const TextColumn& column,
                      double top, double lineHeight, std::size_t maximumLines,
                      const TextStyle& style) {
    auto route = manifest.card.mountPoint;
    if (!manifest.wasHashing())
        route += std::string(kArrowBetween) + manifest.destination.sessionRoot;
    bool hasArrow = false;
    for (const std::string_view line : canvas.wrapped(route, style, column.width, maximumLines)) {
        const auto arrow = hasArrow ? std::string_view::npos : line.find(kArrow);
        if (arrow == std::string_view::npos) {
            drawLine(canvas, line, column, top, style);
        } else {
            hasArrow = true;
            drawAroundArrow(canvas, line.substr(0, arrow), kArrow,
                            line.substr(arrow + kArrow.size()), lineAt(column, top, style), style);
        }
        top -= lineHeight;
    }
}

PdfColor colorOf(OutcomeStatus status) {
    switch (status) {
    case OutcomeStatus::Verified:
        return kGreen;
    case OutcomeStatus::Hashed:
        return kBlue;
    case OutcomeStatus::Failed:
        break;
    }
    return kRed;
}

PdfColor colorOf(VerifyStatus status) {
    switch (status) {
    case VerifyStatus::Verified:
        return kGreen;
    case VerifyStatus::Hashed:
        return kBlue;
    case VerifyStatus::Skipped:
        return kGrey;
    case VerifyStatus::CopiedUnverified:
    case VerifyStatus::Mismatch:
    case VerifyStatus::Failed:
        break;
    }
    return kRed;
}

FontWeight weightOf(VerifyStatus status) {
    return colorOf(status) == kRed ? FontWeight::Bold : FontWeight::Regular;
}

void drawVerdict(PdfCanvas& canvas, const SessionManifest& manifest, const PageNumber& page,
                 const L10n& l10n, double top) {
    constexpr double kHeight = 15;
    constexpr double kTextInset = 6;
    constexpr auto kWord = system(10, FontWeight::Bold, kWhite);
    constexpr auto kMeaning = system(7.5, FontWeight::Medium, kWhite);

    const auto summary = SessionSummary::of(manifest, l10n);
    canvas.fill({kRightHalf.left, top - kHeight, kRightHalf.width, kHeight},
                colorOf(summary.status));
    TextPlace place{.left = kRightHalf.left + kTextInset,
                    .width = kRightHalf.width - 2 * kTextInset,
                    .baseline = centredBaseline(top - kHeight / 2, kWord.size)};
    canvas.draw(summary.verdict, place, kWord);
    const double taken = canvas.width(summary.verdict, kWord) + 2 * kTextInset;
    place.left += taken;
    place.width -= taken;
    place.fit = TextFit::NarrowThenCut;
    canvas.draw(summary.meaning, place, kMeaning);

    top -= kHeight + 2;
    drawIdentity(canvas, summary, top);
    drawProblems(canvas, problemsInHead(canvas, manifest, l10n, kRightHalf.width, page.problems),
                 kRightHalf, top);
}

void drawTotals(PdfCanvas& canvas, const SessionManifest& manifest, const L10n& l10n, double top) {
    constexpr auto kStyle = system(8, FontWeight::Regular, mainText);
    auto place = lineAt(kRightHalf, top, kStyle);
    place.fit = TextFit::NarrowThenCut;
    auto totals = SessionSummary::of(manifest, l10n).totals;
    // The bytes stand among the counts.
    std::erase_if(totals, [&](const auto& fact) { return fact.label == l10n.reportSize(); });
    canvas.draw(onOneLine(totals), place, kStyle);
}

void drawPageNumber(PdfCanvas& canvas, const PageNumber& page, double baseline,
                    const TextStyle& style) {
    const auto text = fmt::format("{} / {}", page.number, page.count);
    const double width = canvas.width(text, style) + 1;
    canvas.draw(text, {.left = (pageWidth - width) / 2, .width = width, .baseline = baseline},
                style);
}

std::string sessionLine(std::string_view reportName, const SessionManifest& manifest,
                        const L10n& l10n) {
    return fmt::format("{}{}{} {}", reportName, kSeparator, l10n.reportSession(),
                       manifest.sessionID);
}

std::string countsLine(const SessionManifest& manifest, const L10n& l10n) {
    return fmt::format("{}{}{}{}{}", l10n.folderCount(manifest.counts.folders), kSeparator,
                       l10n.fileCount(static_cast<int>(manifest.files.size())), kSeparator,
                       PathSize::report(manifest.bytesHandled(), l10n.language()));
}

std::string programLine() {
    return fmt::format("{} v{}", AppInfo::name, AppInfo::version);
}

void giveRestToLast(std::span<double> columnWidths, double tableWidth) {
    const auto others = columnWidths.first(columnWidths.size() - 1);
    columnWidths.back() = std::accumulate(others.begin(), others.end(), tableWidth, std::minus<>());
}

double columnLeft(std::size_t column, std::span<const double> columnWidths, double tableLeft) {
    const auto before = columnWidths.first(column);
    return std::accumulate(before.begin(), before.end(), tableLeft);
}

double nameInset(int depth, double columnWidth) {
    constexpr double kRoomForAName = 52;
    return cellInset +
           std::min(indentPerLevel * depth, columnWidth - 2 * cellInset - kRoomForAName);
}

double centredBaseline(double middle, double fontSize) {
    return middle - kCapitalHeight * fontSize / 2;
}

} // namespace slatewise::PdfReport
