#pragma once

#include "Language/AppLanguage.h"
#include "Pdf/PdfCanvas.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/PdfReport.h"
#include "Reports/ReportTree.h"
#include "Reports/SessionManifest.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// "Reports_Standart.pdf": the session as a table of equal rows on A4 landscape, all folders open.
/// Without state.
namespace slatewise::SessionPDF {

/// One line of the table, in the texts that it shows.
struct Row {
    int depth = 0;
    bool folder = false;
    std::string name;
    std::string sizeHuman;
    std::string sizeBytes;
    /// How many files there are, on a folder.
    std::string action;
    std::string verify;
    /// None on a folder.
    std::optional<VerifyStatus> fate;
    std::string tc;
    std::string dur;
    std::string fps;
    std::string df;
    std::string hash;
    bool fpsMismatch = false;
};

using Widths = std::array<double, 9>;

/// Writes the report, replacing what bears the name; `tree` is the manifest's. Fails with an error
/// in the words of the language when there can be no file, with `PosixError` when the disk fails
/// later; a part of the file stays then.
void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language);

/// Each folder's row, then its content.
std::vector<Row> flatten(std::span<const ReportNode> nodes, AppLanguage language, int depth);

Widths columnWidths();

/// The left edge of a column.
double colX(std::size_t column, const Widths& widths);

/// Draws one page into `canvas`, which has begun it; the first one has the full header.
void drawPage(const SessionManifest& manifest, std::span<const Row> rows, const Widths& widths,
              const PdfReport::PageNumber& page, AppLanguage language, PdfCanvas& canvas);

} // namespace slatewise::SessionPDF
