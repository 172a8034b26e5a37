#include "Pdf/FontFile.h"

#include "Platform/Error.h"

#include <hb-ot.h>
#include <hb-subset.h>
#include <hb.h>

#include <cmath>

namespace slatewise {

namespace {

template <auto release>
struct ReleasedBy {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};

using Blob = std::unique_ptr<hb_blob_t, ReleasedBy<hb_blob_destroy>>;
using Face = std::unique_ptr<hb_face_t, ReleasedBy<hb_face_destroy>>;
using Buffer = std::unique_ptr<hb_buffer_t, ReleasedBy<hb_buffer_destroy>>;
using SubsetInput = std::unique_ptr<hb_subset_input_t, ReleasedBy<hb_subset_input_destroy>>;

constexpr float kThousand = 1000;
constexpr hb_tag_t kCff = HB_TAG('C', 'F', 'F', ' ');

std::string bytes(hb_blob_t* blob) {
    unsigned size = 0;
    const char* data = hb_blob_get_data(blob, &size);
    return {data, size};
}

Blob table(hb_face_t* face, hb_tag_t tag) {
    return Blob(hb_face_reference_table(face, tag));
}

std::string postScriptName(hb_face_t* face) {
    std::array<char, 64> text{};
    unsigned size = text.size();
    hb_ot_name_get_utf8(face, HB_OT_NAME_ID_POSTSCRIPT_NAME, HB_LANGUAGE_INVALID, &size,
                        text.data());
    std::string name;
    for (const char letter : std::string_view(text.data())) {
        if (std::isalnum(static_cast<unsigned char>(letter)) || letter == '-')
            name += letter;
    }
    return name.empty() ? "Font" : name;
}

int signedShort(std::string_view data, std::size_t at) {
    return static_cast<std::int16_t>(static_cast<unsigned char>(data[at]) << 8 |
                                     static_cast<unsigned char>(data[at + 1]));
}

/// Small print wants neither ligatures, which make names hard to compare, nor letters moved
/// together. Other scripts cannot do without what their fonts offer.
std::vector<hb_feature_t> features(hb_script_t script, Figures figures) {
    constexpr auto whole = [](hb_tag_t tag, std::uint32_t value) {
        return hb_feature_t{tag, value, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END};
    };
    std::vector<hb_feature_t> result;
    if (figures == Figures::SameWidth)
        result.push_back(whole(HB_TAG('t', 'n', 'u', 'm'), 1));
    if (script == HB_SCRIPT_LATIN) {
        result.push_back(whole(HB_TAG('l', 'i', 'g', 'a'), 0));
        result.push_back(whole(HB_TAG('c', 'a', 'l', 't'), 0));
        result.push_back(whole(HB_TAG('k', 'e', 'r', 'n'), 0));
    }
    return result;
}

} // namespace

void FontFile::Release::operator()(hb_font_t* font) const {
    hb_font_destroy(font);
}

FontFile::FontFile(const std::filesystem::path& file, unsigned index) {
    const Blob blob(hb_blob_create_from_file(file.c_str()));
    const Face face(hb_face_create(blob.get(), index));
    if (hb_face_get_glyph_count(face.get()) == 0)
        throw Error("no font in " + file.string());
    font_.reset(hb_font_create(face.get()));
    const auto unitsPerEm = static_cast<int>(hb_face_get_upem(face.get()));
    hb_font_set_scale(font_.get(), unitsPerEm, unitsPerEm);
    scale_ = kThousand / static_cast<float>(unitsPerEm);
}

FontFile::~FontFile() = default;

bool FontFile::has(char32_t character) const {
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(font_.get(), character, &glyph) && glyph != 0;
}

std::vector<FontFile::Glyph> FontFile::shape(const Piece& piece, Figures figures) const {
    const Buffer buffer(hb_buffer_create());
    hb_buffer_add_utf16(buffer.get(), reinterpret_cast<const std::uint16_t*>(piece.text.data()),
                        static_cast<int>(piece.text.size()), static_cast<unsigned>(piece.start),
                        static_cast<int>(piece.length));
    const auto script = hb_script_from_string(piece.script, -1);
    hb_buffer_set_script(buffer.get(), script);
    hb_buffer_set_direction(buffer.get(),
                            piece.isRightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    const auto chosen = features(script, figures);
    hb_shape(font_.get(), buffer.get(), chosen.data(), static_cast<unsigned>(chosen.size()));

    unsigned count = 0;
    const auto* glyphs = hb_buffer_get_glyph_infos(buffer.get(), &count);
    const auto* places = hb_buffer_get_glyph_positions(buffer.get(), nullptr);
    std::vector<Glyph> result(count);
    for (unsigned index = 0; index < count; ++index) {
        result[index] = {.id = static_cast<GlyphID>(glyphs[index].codepoint),
                         .advance = static_cast<float>(places[index].x_advance) * scale_,
                         .shiftX = static_cast<float>(places[index].x_offset) * scale_,
                         .shiftY = static_cast<float>(places[index].y_offset) * scale_,
                         .cluster = glyphs[index].cluster};
    }
    return result;
}

float FontFile::width(GlyphID glyph) const {
    return static_cast<float>(hb_font_get_glyph_h_advance(font_.get(), glyph)) * scale_;
}

FontFile::Facts FontFile::facts() const {
    auto* face = hb_font_get_face(font_.get());
    Facts result;
    result.postScriptName = postScriptName(face);
    const auto thousandths = [&](auto units) {
        return static_cast<int>(std::lround(static_cast<float>(units) * scale_));
    };
    const auto head = bytes(table(face, HB_TAG('h', 'e', 'a', 'd')).get());
    constexpr std::size_t kBoundsOffset = 36;
    for (std::size_t side = 0; side < result.bounds.size(); ++side) {
        if (const auto at = kBoundsOffset + 2 * side; at + 1 < head.size())
            result.bounds[side] = thousandths(signedShort(head, at));
    }
    hb_font_extents_t extents{};
    hb_font_get_h_extents(font_.get(), &extents);
    result.ascent = thousandths(extents.ascender);
    result.descent = thousandths(extents.descender);
    hb_position_t capHeight = 0;
    hb_ot_metrics_get_position_with_fallback(font_.get(), HB_OT_METRICS_TAG_CAP_HEIGHT, &capHeight);
    result.capHeight = thousandths(capHeight);
    return result;
}

FontFile::Outlines FontFile::subset(std::span<const GlyphID> glyphs) const {
    const SubsetInput input(hb_subset_input_create_or_fail());
    for (const auto glyph : glyphs)
        hb_set_add(hb_subset_input_glyph_set(input.get()), glyph);
    // Numbers must stay: pages that are written already name glyphs by them.
    hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_RETAIN_GIDS);
    auto* unwanted = hb_subset_input_set(input.get(), HB_SUBSET_SETS_DROP_TABLE_TAG);
    for (const auto tag :
         {HB_TAG('G', 'S', 'U', 'B'), HB_TAG('G', 'P', 'O', 'S'), HB_TAG('G', 'D', 'E', 'F'),
          HB_TAG('n', 'a', 'm', 'e'), HB_TAG('k', 'e', 'r', 'n'), HB_TAG('D', 'S', 'I', 'G')})
        hb_set_add(unwanted, tag);

    const Face face(hb_subset_or_fail(hb_font_get_face(font_.get()), input.get()));
    if (!face)
        throw Error("no part could be taken from font " + facts().postScriptName);
    if (auto cff = bytes(table(face.get(), kCff).get()); !cff.empty())
        return {.format = Outlines::Format::Cff, .data = std::move(cff)};
    const Blob whole(hb_face_reference_blob(face.get()));
    return {.format = Outlines::Format::TrueType, .data = bytes(whole.get())};
}

} // namespace slatewise
