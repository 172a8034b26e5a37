#pragma once

#include "Language/L10n.h"
#include "Offload/MediaMetadata.h"
#include "Offload/OffloadRows.h"
#include "Reports/ReportTree.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

/// The rows of the detailed printed report: what they say and how high they are, before anything is
/// drawn.
namespace slatewise::SessionDetailedPDF {

/// From one line of a row to the next; lengths are in points.
inline constexpr double lineHeight = 8.2;
/// Above the first and below the last line of a row, together.
inline constexpr double rowPadding = 5;
inline constexpr double bannerLineHeight = 9;

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

/// What a row tells of; without a node, of the card.
using ReportTree::Line;

/// Each folder's line, then its content; at depth 0 the card's before all. Points into `nodes`.
std::vector<Line> linesOf(std::span<const ReportNode> nodes, int depth);

/// Makes rows of lines.
struct Describer {
    const ClipEssence& common;
    const std::string& cardName;
    L10n l10n;

    Row operator()(const Line& line) const;
    std::vector<Row> operator()(std::span<const Line> lines) const;

    /// Without making the texts that always have room.
    double heightOf(const Line& line) const;
};

/// Each folder's row, then its content; at depth 0 the banner before all.
std::vector<Row> flatten(std::span<const ReportNode> nodes, const ClipEssence& common,
                         const std::string& cardName, AppLanguage language, int depth);

} // namespace slatewise::SessionDetailedPDF
