#pragma once

#include "Language/AppLanguage.h"
#include "Pdf/PdfCanvas.h"
#include "Reports/PdfReport.h"
#include "Reports/ReportTree.h"
#include "Reports/SessionManifest.h"

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// "Reports_Detailed.pdf": the session on A4 landscape, with what the clips say of themselves. Rows
/// are as high as their lines need; above them stands a banner with what all clips share. Without
/// state.
namespace slatewise::SessionDetailedPDF {

/// One row of the table, in the texts that it shows. Line feeds separate the lines of a cell.
struct Row {
    int depth = 0;
    /// On the banner, too.
    bool folder = false;
    std::string name;
    std::string sizeHuman;
    std::string sizeBytes;
    std::string clip;
    std::string timing;
    std::string status;
    /// None on a folder.
    std::optional<VerifyStatus> fate;
    std::string hash;
    bool fpsMismatch = false;
    /// The one row about the card.
    bool banner = false;
    std::string bannerFacts;
    /// Date and time of the file, under its name.
    std::string nameStamp;
    /// How many lines there must be room for.
    int lines = 0;

    double height() const;
};

using Widths = std::array<double, 6>;

/// Writes the report, replacing what bears the name; `tree` is the manifest's. Fails as
/// `SessionPDF::write` does.
void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const std::filesystem::path& file, AppLanguage language);

/// Each folder's row, then its content; at depth 0 the banner before all.
std::vector<Row> flatten(std::span<const ReportNode> nodes, const ClipEssence& common,
                         const std::string& cardName, AppLanguage language, int depth);

Widths columnWidths();

/// The left edge of a column.
double colX(std::size_t column, const Widths& widths);

/// Draws one page into `canvas`, which has begun it; the first one has the full header.
void drawPage(const SessionManifest& manifest, std::span<const Row> rows, const Widths& widths,
              const PdfReport::PageNumber& page, AppLanguage language, PdfCanvas& canvas);

} // namespace slatewise::SessionDetailedPDF
