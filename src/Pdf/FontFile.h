#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct hb_font_t;

namespace slatewise {

/// Figures that keep their natural width, or all of one width, so that numbers line up.
enum class Figures { Natural, SameWidth };

/// One font of the system: its glyphs, their widths, and a part of it to embed. Lengths are in
/// thousandths of the text's size. For one thread.
class FontFile {
public:
    using GlyphID = std::uint16_t;

    /// A glyph where shaping put it: moved by the shifts from where the text had got to.
    struct Glyph {
        GlyphID id = 0;
        float advance = 0;
        float shiftX = 0;
        float shiftY = 0;
        /// The first code unit of the text that it stands for.
        std::uint32_t cluster = 0;
    };

    /// A piece of text in one direction and one script ("Arab").
    struct Piece {
        std::u16string_view text;
        std::size_t start = 0;
        std::size_t length = 0;
        bool isRightToLeft = false;
        const char* script = "Latn";
    };

    /// What a document says about a font beside its outlines.
    struct Facts {
        std::string postScriptName;
        std::array<int, 4> bounds{};
        int ascent = 0;
        int descent = 0;
        int capHeight = 0;
    };

    struct Outlines {
        enum class Format { TrueType, Cff };
        Format format = Format::TrueType;
        std::string data;
    };

    /// `index` chooses among the fonts of a collection. Fails with `Error` when it is no font.
    FontFile(const std::filesystem::path& file, unsigned index);
    ~FontFile();

    bool has(char32_t character) const;

    /// The glyphs of a piece, left to right.
    std::vector<Glyph> shape(const Piece& piece, Figures figures) const;

    float width(GlyphID glyph) const;
    Facts facts() const;

    /// A font with only these glyphs in it, under their old numbers.
    Outlines subset(std::span<const GlyphID> glyphs) const;

private:
    struct Release {
        void operator()(hb_font_t* font) const;
    };

    std::unique_ptr<hb_font_t, Release> font_;
    float scale_ = 1;
};

} // namespace slatewise
