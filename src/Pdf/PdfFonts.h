#pragma once

#include "Pdf/FontFile.h"
#include "Pdf/FontFinder.h"
#include "Pdf/PdfFile.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace slatewise {

/// What a text is set in: a sans serif, the same with figures of one width, or a typewriter face.
enum class FontRole { System, DigitMonospaced, Monospaced };

struct FontFace {
    FontRole role = FontRole::System;
    FontWeight weight = FontWeight::Regular;

    friend bool operator==(const FontFace&, const FontFace&) = default;
};

/// The fonts of one document: turns text into glyphs, and embeds what was used of each font.
/// Lengths are in thousandths of the text's size. For one thread.
///
/// Most text goes glyph by glyph, each character looked up once for the whole document. Text whose
/// letters depend on each other or that runs from right to left is shaped. A character that the
/// face's own font lacks comes from another font of the system.
class PdfFonts {
public:
    struct Glyph {
        std::uint16_t font = 0;
        FontFile::GlyphID id = 0;
        float advance = 0;
        float shiftX = 0;
        float shiftY = 0;
    };

    /// One line, left to right.
    struct Line {
        std::vector<Glyph> glyphs;
        double width = 0;
        /// Whether a glyph stands elsewhere than where the one before it ended.
        bool isShaped = false;

        void clear();
        void add(const Glyph& glyph);
    };

    PdfFonts();
    ~PdfFonts();

    /// Lays out UTF-8 text on one line. What is wider than `limit` is cut and ends with an
    /// ellipsis. Control characters and their signs are spelled, "‹LF›"; bytes that are no UTF-8 as
    /// U+FFFD.
    void layOut(std::string_view text, FontFace face, double limit, Line& line);

    /// How many bytes of the text, whole characters, have room on a line; at least one character.
    std::size_t prefixThatFits(std::string_view text, FontFace face, double limit);

    /// The advance of a glyph as the document's viewer will know it.
    float width(const Glyph& glyph) const;

    /// Writes the fonts and gives the dictionary that names them "/F0", "/F1" and so on.
    std::string embed(PdfFile& file) const;

private:
    struct Font;

    /// A character as one face shows it.
    struct Entry {
        Glyph glyph;
        bool needsShaping = false;
    };

    struct FaceGlyphs {
        std::uint16_t font = 0;
        Figures figures = Figures::Natural;
        std::unordered_map<char32_t, Entry> entries;
        /// The same for ASCII; null until looked up.
        std::array<const Entry*, 128> ascii{};
    };

    FaceGlyphs& glyphsOf(FontFace face);
    const Entry& entry(FaceGlyphs& face, char32_t character);
    Entry makeEntry(const FaceGlyphs& face, char32_t character);
    std::uint16_t fontFor(const FaceGlyphs& face, char32_t character);
    std::uint16_t open(const FontFinder::Place& place);

    bool layOutSimply(std::string_view text, FaceGlyphs& face, double limit, Line& line);
    void layOutShaped(std::u16string text, FaceGlyphs& face, double limit, Line& line);
    void shape(const std::u16string& text, FaceGlyphs& face, Line& line);
    void shapePiece(const FontFile::Piece& piece, std::uint16_t font, Figures figures, Line& line);

    FontFinder finder_;
    std::vector<std::unique_ptr<Font>> fonts_;
    std::map<std::pair<FontRole, FontWeight>, FaceGlyphs> faces_;
};

} // namespace slatewise
