#pragma once

#include "Language/AppLanguage.h"
#include "Pdf/PdfCanvas.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/PdfReport.h"
#include "Reports/SessionDetailedRows.h"

#include <array>
#include <span>

/// "Reports_Detailed.pdf": the session on A4 landscape, with what the clips say of themselves. Rows
/// are as high as their lines need; above them stands a banner with what all clips share. Without
/// state.
namespace slatewise::SessionDetailedPDF {

using Widths = std::array<double, 6>;

/// Writes the report, replacing what bears the name; `tree` is the manifest's. Fails as
/// `SessionPDF::write` does.
void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language);

Widths columnWidths();

/// The left edge of a column.
double colX(std::size_t column, const Widths& widths);

/// Draws one page into `canvas`, which has begun it; the first one has the full header.
void drawPage(const SessionManifest& manifest, std::span<const Row> rows, const Widths& widths,
              const PdfReport::PageNumber& page, AppLanguage language, PdfCanvas& canvas);

} // namespace slatewise::SessionDetailedPDF
