#include "Pdf/PdfFontEmbedding.h"

#include <fmt/format.h>

#include <vector>

namespace slatewise::PdfFontEmbedding {

namespace {

using Format = FontFile::Outlines::Format;

/// "ABCDEF+": marks a font of which a document holds a part only.
std::string subsetTag(std::size_t number) {
    constexpr std::size_t kLetters = 26;
    std::string tag = "SLATEA";
    tag[4] = static_cast<char>('A' + number / kLetters % kLetters);
    tag[5] = static_cast<char>('A' + number % kLetters);
    return tag + "+";
}

PdfFile::ObjectID writeOutlines(PdfFile& file, const FontFile::Outlines& outlines) {
    return outlines.format == Format::Cff
               ? file.addStream("/Subtype /CIDFontType0C", outlines.data)
               : file.addStream(fmt::format("/Length1 {}", outlines.data.size()), outlines.data);
}

PdfFile::ObjectID writeDescriptor(PdfFile& file, const FontFile& font, const UsedGlyphs& used,
                                  const std::string& name, Format& format) {
    std::vector<FontFile::GlyphID> glyphs;
    for (const auto& [glyph, text] : used)
        glyphs.push_back(glyph);
    const auto outlines = font.subset(glyphs);
    format = outlines.format;
    const auto facts = font.facts();
    constexpr int kSymbolic = 4;
    constexpr int kUsualStemWidth = 80;
    return file.addObject(fmt::format(
        "<< /Type /FontDescriptor /FontName /{} /Flags {} /FontBBox [{}] /ItalicAngle 0 /Ascent {} "
        "/Descent {} /CapHeight {} /StemV {} /{} {} >>",
        name, kSymbolic, fmt::join(facts.bounds, " "), facts.ascent, facts.descent, facts.capHeight,
        kUsualStemWidth, format == Format::Cff ? "FontFile3" : "FontFile2",
        PdfFile::reference(writeOutlines(file, outlines))));
}

std::string widths(const FontFile& font, const UsedGlyphs& used) {
    std::string result = "[";
    for (const auto& [glyph, text] : used) {
        result += fmt::format(" {} [", glyph);
        PdfFile::appendNumber(result, static_cast<double>(font.width(glyph)));
        result += ']';
    }
    return result + " ]";
}

/// The map by which viewers find and copy text.
std::string textMap(const UsedGlyphs& used) {
    std::string result =
        "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
        "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
        "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
        "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n";
    std::vector<std::string> entries;
    for (const auto& [glyph, text] : used) {
        if (text.empty())
            continue;
        std::string units;
        for (const char16_t unit : text)
            units += fmt::format("{:04X}", static_cast<unsigned>(unit));
        entries.push_back(fmt::format("<{:04X}> <{}>\n", glyph, units));
    }
    constexpr std::size_t kEntriesInABlock = 100;
    for (std::size_t first = 0; first < entries.size(); first += kEntriesInABlock) {
        const auto end = std::min(entries.size(), first + kEntriesInABlock);
        result += fmt::format("{} beginbfchar\n", end - first);
        for (auto index = first; index < end; ++index)
            result += entries[index];
        result += "endbfchar\n";
    }
    return result + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

} // namespace

PdfFile::ObjectID write(PdfFile& file, const FontFile& font, const UsedGlyphs& used,
                        std::size_t number) {
    const auto name = subsetTag(number) + font.facts().postScriptName;
    Format format = Format::TrueType;
    const auto descriptor = writeDescriptor(file, font, used, name, format);
    const auto glyphFont = file.addObject(fmt::format(
        "<< /Type /Font /Subtype /{} /BaseFont /{} /CIDSystemInfo << /Registry (Adobe) /Ordering "
        "(Identity) /Supplement 0 >> /FontDescriptor {} /W {}{} >>",
        format == Format::Cff ? "CIDFontType0" : "CIDFontType2", name,
        PdfFile::reference(descriptor), widths(font, used),
        format == Format::Cff ? "" : " /CIDToGIDMap /Identity"));
    return file.addObject(fmt::format(
        "<< /Type /Font /Subtype /Type0 /BaseFont /{} /Encoding /Identity-H /DescendantFonts [{}] "
        "/ToUnicode {} >>",
        name, PdfFile::reference(glyphFont),
        PdfFile::reference(file.addStream("", textMap(used)))));
}

} // namespace slatewise::PdfFontEmbedding
