#pragma once

#include "Language/AppLanguage.h"
#include "Pdf/PdfCanvas.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/SessionManifest.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace slatewise {
class L10n;
}

/// What the two printed reports share: the page, the look, the texts above and below the table.
/// Lengths are in points, the origin is the page's lower left corner.
namespace slatewise::PdfReport {

/// A4, landscape.
inline constexpr double pageWidth = 842;
inline constexpr double pageHeight = 595;
/// Between a cell's edge and its text.
inline constexpr double cellInset = 4;
/// How far each level of folders moves a name to the right.
inline constexpr double indentPerLevel = 9;

inline constexpr PdfColor mainText = PdfColor::grey(0.12);
inline constexpr PdfColor headFill = PdfColor::grey(0.94);
inline constexpr PdfColor accent = {0.29, 0.17, 0.83};
inline constexpr PdfColor rateMismatch = {0.71, 0.14, 0.09};

constexpr TextStyle system(double size, FontWeight weight, const PdfColor& color) {
    return {{FontRole::System, weight}, size, color};
}

constexpr TextStyle digits(double size, FontWeight weight, const PdfColor& color) {
    return {{FontRole::DigitMonospaced, weight}, size, color};
}

constexpr TextStyle monospaced(double size, const PdfColor& color) {
    return {{FontRole::Monospaced, FontWeight::Regular}, size, color};
}

/// Replaces what is at `file` by a document that `draw` fills. Fails with an error in the
/// words of the language when the file or a font cannot be opened, and with `PosixError` when the
/// disk fails later.
void write(const SessionManifest& manifest, const FileBeneath& file, AppLanguage language,
           const std::function<void(PdfCanvas&)>& draw);

/// Left edge and width of the column of text outside the table.
struct TextColumn {
    double left = 0;
    double width = 0;
};

/// One line whose box has its upper edge at `top`; cut when it is too long.
void drawLine(PdfCanvas& canvas, std::string_view text, const TextColumn& column, double top,
              const TextStyle& style);

/// "/media/A001  →  /disk/A001", the arrow in the accent colour; the card alone when nothing was to
/// be copied. When both have no room each gets at least half of it.
void drawRoute(PdfCanvas& canvas, const SessionManifest& manifest, const TextColumn& column,
               double top, const TextStyle& style);

/// The same on as many as `maximumLines` lines.
void drawWrappedRoute(PdfCanvas& canvas, const SessionManifest& manifest, const TextColumn& column,
                      double top, double lineHeight, std::size_t maximumLines,
                      const TextStyle& style);

/// "<name>  ·  Session <id>".
std::string sessionLine(std::string_view reportName, const SessionManifest& manifest,
                        const L10n& l10n);

/// Where a page stands among all of its document.
struct PageNumber {
    std::size_t number = 1;
    std::size_t count = 1;
    /// The first page of the problems in full; 0 where the head has them all.
    std::size_t problems = 0;
};

/// Of a document whose pages of problems stand behind those of the table.
constexpr PageNumber firstPage(std::size_t tablePages, std::size_t problemPages) {
    return {.number = 1,
            .count = tablePages + problemPages,
            .problems = problemPages > 0 ? tablePages + 1 : 0};
}

/// The colours in which a verdict or a file's fate is told: calm where all is as it should be.
PdfColor colorOf(OutcomeStatus status);
PdfColor colorOf(VerifyStatus status);
/// What is not as it should be is heavier than all around it.
FontWeight weightOf(VerifyStatus status);

/// In the right half of the header: the verdict as a coloured band, whose session it is, and below
/// as many of its problems as there is room for.
void drawVerdict(PdfCanvas& canvas, const SessionManifest& manifest, const PageNumber& page,
                 const L10n& l10n, double top);

/// Beside the counts: files by their fate, seconds, speed.
void drawTotals(PdfCanvas& canvas, const SessionManifest& manifest, const L10n& l10n, double top);

/// "3 / 66" in the middle of the foot.
void drawPageNumber(PdfCanvas& canvas, const PageNumber& page, double baseline,
                    const TextStyle& style);

/// "2 folders  ·  5 files  ·  1.2 MB (1,234,567 bytes)".
std::string countsLine(const SessionManifest& manifest, const L10n& l10n);

/// "Slatewise DIT v0.1.42.0".
std::string programLine();

/// Gives the last column what the others leave of the table.
void giveRestToLast(std::span<double> columnWidths, double tableWidth);

/// The left edge of a column.
double columnLeft(std::size_t column, std::span<const double> columnWidths, double tableLeft);

/// Where a name begins at that depth, from the left edge of a column: in a deep tree there must be
/// room for a name, too.
double nameInset(int depth, double columnWidth);

/// The baseline of capitals that stand in the middle between two heights.
double centredBaseline(double middle, double fontSize);

} // namespace slatewise::PdfReport
