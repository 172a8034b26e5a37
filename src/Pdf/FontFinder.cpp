#include "Pdf/FontFinder.h"

#include "Platform/Error.h"

#include <fontconfig/fontconfig.h>

namespace slatewise {

namespace {

struct DestroyPattern {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, DestroyPattern>;

int weightValue(FontWeight weight) {
    switch (weight) {
    case FontWeight::Regular:
        return FC_WEIGHT_REGULAR;
    case FontWeight::Medium:
        return FC_WEIGHT_MEDIUM;
    case FontWeight::Semibold:
        return FC_WEIGHT_DEMIBOLD;
    case FontWeight::Bold:
        return FC_WEIGHT_BOLD;
    }
    return FC_WEIGHT_REGULAR;
}

/// What a document can embed: outlines of one colour that need no setting of axes.
Pattern request(const std::string& family, FontWeight weight) {
    Pattern pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, weightValue(weight));
    FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
    FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

bool isTrue(FcPattern* font, const char* property) {
    FcBool value = FcFalse;
    return FcPatternGetBool(font, property, 0, &value) == FcResultMatch && value == FcTrue;
}

/// A font that a document can embed; whatever else fontconfig would settle for gives none.
std::optional<FontFinder::Place> placeOf(FcPattern* font) {
    FcChar8* file = nullptr;
    FcChar8* format = nullptr;
    int index = 0;
    if (FcPatternGetString(font, FC_FILE, 0, &file) != FcResultMatch ||
        FcPatternGetString(font, FC_FONTFORMAT, 0, &format) != FcResultMatch)
        return std::nullopt;
    const std::string_view formatName(reinterpret_cast<const char*>(format));
    if (formatName != "TrueType" && formatName != "CFF")
        return std::nullopt;
    if (isTrue(font, FC_COLOR) || isTrue(font, FC_VARIABLE))
        return std::nullopt;
    FcPatternGetInteger(font, FC_INDEX, 0, &index);
    constexpr int kWithinCollection = 0xFFFF;
    if (index > kWithinCollection)
        return std::nullopt;
    return FontFinder::Place{reinterpret_cast<const char*>(file), static_cast<unsigned>(index)};
}

} // namespace

void FontFinder::Release::operator()(_FcFontSet* fonts) const {
    FcFontSetDestroy(fonts);
}

FontFinder::FontFinder() = default;
FontFinder::~FontFinder() = default;

FontFinder::Place FontFinder::find(const std::string& family, FontWeight weight) {
    const auto pattern = request(family, weight);
    FcResult result = FcResultNoMatch;
    if (const Pattern font(FcFontMatch(nullptr, pattern.get(), &result)); font) {
        if (const auto place = placeOf(font.get()))
            return *place;
    }
    if (const auto place = findFor(U'A'))
        return *place;
    throw Error("no font installed that could stand for " + family);
}

std::optional<FontFinder::Place> FontFinder::findFor(char32_t character) {
    if (!fallbacks_) {
        FcResult result = FcResultNoMatch;
        fallbacks_.reset(FcFontSort(nullptr, request("sans-serif", FontWeight::Regular).get(),
                                    FcFalse, nullptr, &result));
    }
    for (int index = 0; fallbacks_ && index < fallbacks_->nfont; ++index) {
        auto* font = fallbacks_->fonts[index];
        FcCharSet* characters = nullptr;
        if (FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) != FcResultMatch ||
            !FcCharSetHasChar(characters, character))
            continue;
        if (auto place = placeOf(font))
            return place;
    }
    return std::nullopt;
}

} // namespace slatewise
