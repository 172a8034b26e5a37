#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// PDF files as other programs read them.
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

/// A page as it looks, three bytes for each pixel.
struct PdfPicture {
    int width = 0;
    int height = 0;
    std::string pixels;
};

/// Resolution of pictures, in pixels per point.
inline constexpr int kPixelsPerPoint = 2;

/// Each of these fails when the file is no proper PDF.
std::string pdfText(const std::filesystem::path& file);
std::vector<PdfWord> pdfWords(const std::filesystem::path& file);
PdfPicture pdfPicture(const std::filesystem::path& file, int page);

/// The media box of every page: "0.00 0.00 842.00 595.00".
std::vector<std::string> pdfMediaBoxes(const std::filesystem::path& file);

/// How many fonts there are, and how many of them travel with the file.
struct PdfFontCounts {
    int all = 0;
    int embedded = 0;
};
PdfFontCounts pdfFonts(const std::filesystem::path& file);

} // namespace slatewise::test
