#pragma once

#include "Pdf/PdfFile.h"
#include "Pdf/PdfFonts.h"
#include "Platform/Clock.h"
#include "Platform/Files/RootFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

struct PdfColor {
    double red = 0;
    double green = 0;
    double blue = 0;

    /// 0 is black, 1 is white.
    static constexpr PdfColor grey(double level) { return {level, level, level}; }

    friend bool operator==(const PdfColor&, const PdfColor&) = default;
};

struct PdfRectangle {
    double left = 0;
    double bottom = 0;
    double width = 0;
    double height = 0;
};

struct PdfLine {
    double fromX = 0;
    double fromY = 0;
    double toX = 0;
    double toY = 0;
};

struct TextStyle {
    FontFace face;
    double size = 0;
    PdfColor color;
};

enum class TextAlignment { Left, Right };

/// What becomes of a text that is wider than its place: it is cut and ends with an ellipsis, or it
/// is set narrower first, within reason, since half a number says something else.
enum class TextFit { Cut, NarrowThenCut };

/// Where a line of text stands.
struct TextPlace {
    double left = 0;
    double width = 0;
    double baseline = 0;
    TextAlignment alignment = TextAlignment::Left;
    TextFit fit = TextFit::Cut;
};

/// Pixels, eight bits for each of red, green, blue; beside them how opaque each pixel is.
struct PdfImage {
    int width = 0;
    int height = 0;
    std::string colors;
    std::string opacity;
};

/// Draws a document of equal pages, one page after the other. Lengths are in points, the origin is
/// the page's lower left corner. For one thread; any thread will do, and no display is needed.
/// Fails with `PosixError` when the file cannot be written, with `Error` when no font is found.
class PdfCanvas {
public:
    struct Description {
        double pageWidth = 0;
        double pageHeight = 0;
        std::string title;
        std::string producer;
        /// "en".
        std::string language;
        Instant created{};
    };

    /// Creates the file, in place of one that is there.
    PdfCanvas(const FileBeneath& file, Description description);

    void beginPage();
    void endPage();
    /// Completes the file and waits until it is on the disk.
    void finish();

    void fill(const PdfRectangle& area, const PdfColor& color);
    void stroke(const PdfRectangle& frame, const PdfColor& color, double lineWidth);
    void stroke(const std::vector<PdfLine>& lines, const PdfColor& color, double lineWidth);
    void draw(const PdfImage& image, const PdfRectangle& area);

    /// One line of UTF-8 text.
    void draw(std::string_view text, const TextPlace& place, const TextStyle& style);

    /// How wide the text is on one line.
    double width(std::string_view text, const TextStyle& style);

    /// The text in lines no wider than `width`, broken at blanks and behind slashes where possible.
    /// The last of `maximumLines` holds all that is left.
    std::vector<std::string> wrapped(std::string_view text, const TextStyle& style, double width,
                                     std::size_t maximumLines);

private:
    void number(double value);
    void numbers(std::initializer_list<double> values);
    void useFillColor(const PdfColor& color);
    void useStroke(const PdfColor& color, double lineWidth);
    void showGlyphs(double size);
    void showShapedGlyphs(double size);
    void useFont(std::uint16_t font, double size);

    PdfFile file_;
    Description description_;
    PdfFonts fonts_;
    PdfFile::ObjectID pageTree_;
    PdfFile::ObjectID resources_;
    std::vector<PdfFile::ObjectID> pages_;
    std::string imageNames_;
    std::vector<std::pair<const PdfImage*, std::string>> images_;

    /// The drawing operators of the page at work, and what they have set so far.
    std::string content_;
    PdfColor fillColor_;
    int font_ = -1;
    double fontSize_ = 0;
    PdfFonts::Line line_;
};

} // namespace slatewise
