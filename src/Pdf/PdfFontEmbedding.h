#pragma once

#include "Pdf/FontFile.h"
#include "Pdf/PdfFile.h"

#include <map>
#include <string>

/// Puts a font into a document, so that it looks the same everywhere and its text can be searched.
namespace slatewise::PdfFontEmbedding {

/// The glyphs that a document uses, and the text each one stands for.
using UsedGlyphs = std::map<FontFile::GlyphID, std::u16string>;

/// Writes those glyphs of the font and gives the font object. `number` tells apart the parts that
/// one document takes of its fonts.
PdfFile::ObjectID write(PdfFile& file, const FontFile& font, const UsedGlyphs& used,
                        std::size_t number);

} // namespace slatewise::PdfFontEmbedding
