#include "Pdf/PdfFonts.h"

#include "Pdf/PdfFontEmbedding.h"
#include "Pdf/ShapedText.h"
#include "Platform/Text.h"

#include <fmt/format.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>

namespace slatewise {

namespace {

constexpr char32_t kEllipsis = U'…';
constexpr char32_t kReplacement = 0xFFFD;

/// The next character of UTF-8 text, in the form in which it is shown.
char32_t nextCharacter(std::string_view text, std::size_t& at) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto first = bytes[at];
    if (first >= ' ' && first < 0x7F) {
        ++at;
        return first;
    }
    auto index = static_cast<std::int32_t>(at);
    UChar32 character = 0;
    U8_NEXT(bytes, index, static_cast<std::int32_t>(text.size()), character);
    at = static_cast<std::size_t>(index);
    return Text::visible(character < 0 ? kReplacement : static_cast<char32_t>(character));
}

/// The signs of control characters are three tiny letters in the room of one, which in print are a
/// speck: they are spelled.
constexpr char32_t kFirstSign = 0x2400;
constexpr std::array<std::u32string_view, 34> kSpelledSigns = {
    U"‹NUL›", U"‹SOH›", U"‹STX›", U"‹ETX›", U"‹EOT›", U"‹ENQ›", U"‹ACK›", U"‹BEL›", U"‹BS›",
    U"‹HT›",  U"‹LF›",  U"‹VT›",  U"‹FF›",  U"‹CR›",  U"‹SO›",  U"‹SI›",  U"‹DLE›", U"‹DC1›",
    U"‹DC2›", U"‹DC3›", U"‹DC4›", U"‹NAK›", U"‹SYN›", U"‹ETB›", U"‹CAN›", U"‹EM›",  U"‹SUB›",
    U"‹ESC›", U"‹FS›",  U"‹GS›",  U"‹RS›",  U"‹US›",  U"‹SP›",  U"‹DEL›"};

/// Calls `each` with what stands on the page for a character; `each` says whether to go on, and so
/// does this.
template <typename Each>
bool spell(char32_t character, Each each) {
    if (character < kFirstSign || character >= kFirstSign + kSpelledSigns.size())
        return each(character);
    const auto letters = kSpelledSigns[character - kFirstSign];
    return std::all_of(letters.begin(), letters.end(), each);
}

std::u16string shownText(std::string_view text) {
    std::u16string result;
    for (std::size_t at = 0; at < text.size();) {
        spell(nextCharacter(text, at), [&](char32_t character) {
            ShapedText::append(result, character);
            return true;
        });
    }
    return result;
}

/// The text of a cluster; it ends where the next one in reading order begins.
std::u16string_view clusterText(const FontFile::Piece& piece,
                                const std::vector<FontFile::Glyph>& glyphs, std::uint32_t cluster) {
    auto end = static_cast<std::uint32_t>(piece.start + piece.length);
    for (const auto& other : glyphs) {
        if (other.cluster > cluster)
            end = std::min(end, other.cluster);
    }
    return piece.text.substr(cluster, end - cluster);
}

const char* familyOf(FontRole role) {
    return role == FontRole::Monospaced ? "JetBrains Mono" : "Inter Display";
}

} // namespace

/// One embedded font and which of its glyphs a document uses, with the text each stands for.
struct PdfFonts::Font {
    Font(FontFinder::Place from) : place(std::move(from)), file(place.file, place.index) {}

    void use(FontFile::GlyphID glyph, std::u16string_view text) {
        if (const auto [found, isNew] = used.try_emplace(glyph, text);
            !isNew && found->second.empty())
            found->second = text;
    }

    FontFinder::Place place;
    FontFile file;
    PdfFontEmbedding::UsedGlyphs used;
    /// Whether it was opened for characters that another font lacks.
    bool isFallback = false;
};

void PdfFonts::Line::clear() {
    glyphs.clear();
    width = 0;
    isShaped = false;
}

void PdfFonts::Line::add(const Glyph& glyph) {
    glyphs.push_back(glyph);
    width += static_cast<double>(glyph.advance);
}

PdfFonts::PdfFonts() = default;
PdfFonts::~PdfFonts() = default;

void PdfFonts::layOut(std::string_view text, FontFace face, double limit, Line& line) {
    auto& glyphs = glyphsOf(face);
    line.clear();
    if (layOutSimply(text, glyphs, limit, line))
        return;
    line.clear();
    layOutShaped(shownText(text), glyphs, limit, line);
}

std::size_t PdfFonts::prefixThatFits(std::string_view text, FontFace face, double limit) {
    auto& glyphs = glyphsOf(face);
    double width = 0;
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size(); end = at) {
        spell(nextCharacter(text, at), [&](char32_t character) {
            width += static_cast<double>(entry(glyphs, character).glyph.advance);
            return true;
        });
        if (width > limit && end > 0)
            break;
    }
    return end;
}

float PdfFonts::width(const Glyph& glyph) const {
    return fonts_[glyph.font]->file.width(glyph.id);
}

std::string PdfFonts::embed(PdfFile& file) const {
    std::string names = "<<";
    for (std::size_t index = 0; index < fonts_.size(); ++index) {
        if (!fonts_[index]->used.empty()) {
            const auto font =
                PdfFontEmbedding::write(file, fonts_[index]->file, fonts_[index]->used, index);
            names += fmt::format(" /F{} {}", index, PdfFile::reference(font));
        }
    }
    return names + " >>";
}

PdfFonts::FaceGlyphs& PdfFonts::glyphsOf(FontFace face) {
    const auto [found, isNew] = faces_.try_emplace({face.role, face.weight});
    if (isNew) {
        found->second.font = open(finder_.find(familyOf(face.role), face.weight));
        if (face.role == FontRole::DigitMonospaced)
            found->second.figures = Figures::SameWidth;
    }
    return found->second;
}

const PdfFonts::Entry& PdfFonts::entry(FaceGlyphs& face, char32_t character) {
    const bool isAscii = character < face.ascii.size();
    if (isAscii && face.ascii[character])
        return *face.ascii[character];
    auto found = face.entries.find(character);
    if (found == face.entries.end())
        found = face.entries.emplace(character, makeEntry(face, character)).first;
    if (isAscii)
        face.ascii[character] = &found->second;
    return found->second;
}

PdfFonts::Entry PdfFonts::makeEntry(const FaceGlyphs& face, char32_t character) {
    const auto font = fontFor(face, character);
    if (!fonts_[font]->file.has(character) && character != kReplacement)
        return makeEntry(face, kReplacement);
    Entry result;
    result.needsShaping = ShapedText::needsShaping(character);
    Line line;
    std::u16string text;
    ShapedText::append(text, character);
    shapePiece({.text = text,
                .start = 0,
                .length = text.size(),
                .isRightToLeft = false,
                .script = ShapedText::scriptCode(ShapedText::scriptOf(character))},
               font, face.figures, line);
    if (line.glyphs.size() == 1 && !line.isShaped)
        result.glyph = line.glyphs.front();
    else
        result.needsShaping = true;
    result.glyph.advance = static_cast<float>(line.width);
    return result;
}

std::uint16_t PdfFonts::fontFor(const FaceGlyphs& face, char32_t character) {
    if (fonts_[face.font]->file.has(character))
        return face.font;
    for (std::size_t index = 0; index < fonts_.size(); ++index) {
        if (fonts_[index]->isFallback && fonts_[index]->file.has(character))
            return static_cast<std::uint16_t>(index);
    }
    if (const auto place = finder_.findFor(character)) {
        const auto font = open(*place);
        fonts_[font]->isFallback = true;
        return font;
    }
    return face.font;
}

std::uint16_t PdfFonts::open(const FontFinder::Place& place) {
    const auto found = std::find_if(fonts_.begin(), fonts_.end(),
                                    [&](const auto& font) { return font->place == place; });
    if (found == fonts_.end()) {
        fonts_.push_back(std::make_unique<Font>(place));
        return static_cast<std::uint16_t>(fonts_.size() - 1);
    }
    return static_cast<std::uint16_t>(found - fonts_.begin());
}

/// False, with a line of no use, when the text has to be shaped.
bool PdfFonts::layOutSimply(std::string_view text, FaceGlyphs& face, double limit, Line& line) {
    for (std::size_t at = 0; at < text.size();) {
        const auto add = [&](char32_t character) {
            const auto& next = entry(face, character);
            if (!next.needsShaping)
                line.add(next.glyph);
            return !next.needsShaping;
        };
        if (!spell(nextCharacter(text, at), add))
            return false;
    }
    if (line.width <= limit)
        return true;
    const auto& ellipsis = entry(face, kEllipsis).glyph;
    const auto blank = entry(face, U' ').glyph.id;
    while (!line.glyphs.empty() && (line.width + static_cast<double>(ellipsis.advance) > limit ||
                                    line.glyphs.back().id == blank)) {
        line.width -= static_cast<double>(line.glyphs.back().advance);
        line.glyphs.pop_back();
    }
    line.add(ellipsis);
    return true;
}

void PdfFonts::layOutShaped(std::u16string text, FaceGlyphs& face, double limit, Line& line) {
    shape(text, face, line);
    if (line.width <= limit)
        return;
    // Where to cut shows only when what is left is shaped again: guess from the width, then go
    // back.
    auto end = static_cast<std::size_t>(static_cast<double>(text.size()) * limit / line.width) + 2;
    end = std::min(end, text.size());
    do {
        end = ShapedText::previousBoundary(text, end);
        text.resize(end);
        line.clear();
        shape(ShapedText::withEllipsis(text), face, line);
    } while (line.width > limit && end > 0);
}

void PdfFonts::shape(const std::u16string& text, FaceGlyphs& face, Line& line) {
    const auto sameFont = [&](char32_t character) {
        return fontFor(face, character);
    };
    for (const auto& part : ShapedText::parts(text, sameFont)) {
        shapePiece({.text = text,
                    .start = part.start,
                    .length = part.length,
                    .isRightToLeft = part.isRightToLeft,
                    .script = ShapedText::scriptCode(part.script)},
                   part.font, face.figures, line);
    }
}

void PdfFonts::shapePiece(const FontFile::Piece& piece, std::uint16_t font, Figures figures,
                          Line& line) {
    auto& owner = *fonts_[font];
    const auto glyphs = owner.file.shape(piece, figures);
    for (std::size_t index = 0; index < glyphs.size(); ++index) {
        const auto& glyph = glyphs[index];
        // Of several glyphs for one piece of text the first speaks for all.
        const bool isFurther = index > 0 && glyphs[index - 1].cluster == glyph.cluster;
        owner.use(glyph.id, isFurther ? u"" : clusterText(piece, glyphs, glyph.cluster));
        const Glyph placed{.font = font,
                           .id = glyph.id,
                           .advance = glyph.advance,
                           .shiftX = glyph.shiftX,
                           .shiftY = glyph.shiftY};
        line.isShaped |= glyph.shiftX != 0 || glyph.shiftY != 0 || glyph.advance != width(placed);
        line.add(placed);
    }
}

} // namespace slatewise
