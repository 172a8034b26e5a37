#include "Reports/PdfReport.h"

#include "Offload/PathSize.h"
#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"

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

PdfCanvas open(const SessionManifest& manifest, const std::filesystem::path& file,
               AppLanguage language) {
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

} // namespace

void write(const SessionManifest& manifest, const std::filesystem::path& file, AppLanguage language,
           const std::function<void(PdfCanvas&)>& draw) {
    if (FileSystem::exists(file))
        FileSystem::remove(file);
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
    drawAroundArrow(canvas, manifest.card.mountPoint, kArrowBetween,
                    manifest.destination.sessionRoot, lineAt(column, top, style), style);
}

void drawWrappedRoute(PdfCanvas& canvas, const SessionManifest& manifest, const TextColumn& column,
                      double top, double lineHeight, std::size_t maximumLines,
                      const TextStyle& style) {
    const auto route =
        manifest.card.mountPoint + std::string(kArrowBetween) + manifest.destination.sessionRoot;
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

std::string sessionLine(std::string_view reportName, const SessionManifest& manifest,
                        const L10n& l10n) {
    return fmt::format("{}{}{} {}", reportName, kSeparator, l10n.reportSession(),
                       manifest.sessionID);
}

std::string countsLine(const SessionManifest& manifest, const L10n& l10n) {
    return fmt::format("{}{}{}{}{}", l10n.folderCount(manifest.counts.folders), kSeparator,
                       l10n.fileCount(static_cast<int>(manifest.files.size())), kSeparator,
                       PathSize::report(manifest.counts.bytesCopied, l10n.language()));
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
