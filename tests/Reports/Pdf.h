#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>

#include <filesystem>
#include <string>
#include <vector>

/// PDF files as another program reads them. Each of these fails when the file is no proper PDF.
namespace slatewise::test {

/// A word on a page, in points from the page's upper left corner.
struct PdfWord {
    int page = 0;
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    std::string text;
};

/// Resolution of pictures, in pixels per point.
inline constexpr int kPixelsPerPoint = 2;

std::string pdfText(const std::filesystem::path& file);
std::vector<PdfWord> pdfWords(const std::filesystem::path& file);
/// Those of the words that are exactly this text.
std::vector<PdfWord> wordsLike(const std::vector<PdfWord>& words, const std::string& text);

/// A page as it looks, counted from 1.
QImage pdfPicture(const std::filesystem::path& file, int page);

/// Of all colours in a word's box, the one that is furthest from grey.
QColor pdfStrongestColor(const std::filesystem::path& file, const PdfWord& word);

/// Where a page is clearly red, in points from its upper left corner.
struct PdfArea {
    QRectF box;
    int pixels = 0;
};
PdfArea pdfRedArea(const std::filesystem::path& file, int page);

/// Width and height of every page, in points.
std::vector<std::pair<double, double>> pdfPageSizes(const std::filesystem::path& file);

/// How many fonts there are, and how many of them travel with the file.
struct PdfFontCounts {
    int all = 0;
    int embedded = 0;
};
PdfFontCounts pdfFonts(const std::filesystem::path& file);

} // namespace slatewise::test
