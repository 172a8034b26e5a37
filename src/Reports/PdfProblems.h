#pragma once

#include "Pdf/PdfCanvas.h"
#include "Reports/PdfReport.h"
#include "Reports/SessionManifest.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace slatewise {
class L10n;
}

/// What a printed report has to say of a session besides its rows: in the head as much as there is
/// room for, and where that is not all of it, everything on pages behind the table.
namespace slatewise::PdfReport {

struct ProblemLine {
    std::string text;
    TextStyle style;
    /// From the line above, or from the upper edge.
    double spaceBefore = 0;
};

using ProblemPage = std::vector<ProblemLine>;

/// The lines below the verdict: each sentence on a line of its own, a single one on all. Where that
/// is not all of them, the last line says from which page on they stand in full.
ProblemPage problemsInHead(PdfCanvas& canvas, const SessionManifest& manifest, const L10n& l10n,
                           double width, std::size_t fullFromPage);

/// All of them in full, when the head has not; otherwise none.
std::vector<ProblemPage> problemPages(PdfCanvas& canvas, const SessionManifest& manifest,
                                      const L10n& l10n, double width);

/// Draws the lines from `top` down and gives where the last one ends.
double drawProblems(PdfCanvas& canvas, const ProblemPage& lines, const TextColumn& column,
                    double top);

/// Draws each of them on a page of its own, between what `drawHead` and `drawFoot` draw; the foot
/// is told where the lines end. `page` is the first one's and counts on.
void drawProblemPages(PdfCanvas& canvas, std::span<const ProblemPage> pages,
                      const TextColumn& column, double top, PageNumber& page,
                      const std::function<void()>& drawHead,
                      const std::function<void(double bottom)>& drawFoot);

} // namespace slatewise::PdfReport
