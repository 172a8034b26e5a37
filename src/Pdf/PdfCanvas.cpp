#include "Pdf/PdfCanvas.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace slatewise {

namespace {

constexpr double kThousand = 1000;
/// Narrower than this, letters are hard to read.
constexpr double kNarrowest = 0.7;

void appendEscaped(std::string& out, unsigned char byte) {
    switch (byte) {
    case '(':
    case ')':
    case '\\':
        out += '\\';
        out += static_cast<char>(byte);
        return;
    case '\r':
        out += "\\r";
        return;
    default:
        out += static_cast<char>(byte);
    }
}

void appendGlyph(std::string& out, FontFile::GlyphID glyph) {
    constexpr int kByteBits = 8;
    appendEscaped(out, static_cast<unsigned char>(glyph >> kByteBits));
    appendEscaped(out, static_cast<unsigned char>(glyph));
}

/// "D:20260301093015Z".
std::string dateString(Instant moment) {
    auto text = Clock::iso8601(moment);
    std::erase_if(text,
                  [](char letter) { return letter == '-' || letter == ':' || letter == 'T'; });
    return "(D:" + text + ")";
}

/// Where to break, at or before `end`: behind a blank or a slash, unless that would leave most of
/// the line empty.
std::size_t breakBefore(std::string_view text, std::size_t end) {
    if (end == text.size())
        return end;
    const auto last = text.substr(0, end + 1).find_last_of(" /");
    if (last == std::string_view::npos || last < end / 2)
        return end;
    return std::min(end, text[last] == ' ' ? last : last + 1);
}

} // namespace

PdfCanvas::PdfCanvas(const FileBeneath& file, Description description)
    : file_(file), description_(std::move(description)), pageTree_(file_.reserve()),
      resources_(file_.reserve()) {}

void PdfCanvas::beginPage() {
    content_.clear();
    fillColor_ = {};
    font_ = -1;
}

void PdfCanvas::endPage() {
    const auto content = file_.addStream("", content_);
    pages_.push_back(
        file_.addObject(fmt::format("<< /Type /Page /Parent {} /Contents {} >>",
                                    PdfFile::reference(pageTree_), PdfFile::reference(content))));
}

void PdfCanvas::finish() {
    file_.writeObject(resources_, fmt::format("<< /Font {} /XObject <<{} >> >>",
                                              fonts_.embed(file_), imageNames_));
    std::string kids;
    for (const auto page : pages_)
        kids += PdfFile::reference(page) + "\n";
    file_.writeObject(
        pageTree_,
        fmt::format("<< /Type /Pages /Count {} /MediaBox [0 0 {} {}] /Resources {} /Kids [\n{}] >>",
                    pages_.size(), description_.pageWidth, description_.pageHeight,
                    PdfFile::reference(resources_), kids));
    const auto catalog = file_.addObject(fmt::format(
        "<< /Type /Catalog /Pages {} /Lang ({}) /ViewerPreferences << /DisplayDocTitle true >> >>",
        PdfFile::reference(pageTree_), description_.language));
    const auto information = file_.addObject(fmt::format(
        "<< /Title {} /Producer {} /CreationDate {} >>", PdfFile::textString(description_.title),
        PdfFile::textString(description_.producer), dateString(description_.created)));
    file_.finish(catalog, information);
}

void PdfCanvas::fill(const PdfRectangle& area, const PdfColor& color) {
    useFillColor(color);
    numbers({area.left, area.bottom, area.width, area.height});
    content_ += "re f\n";
}

void PdfCanvas::stroke(const PdfRectangle& frame, const PdfColor& color, double lineWidth) {
    useStroke(color, lineWidth);
    numbers({frame.left, frame.bottom, frame.width, frame.height});
    content_ += "re S\n";
}

void PdfCanvas::stroke(const std::vector<PdfLine>& lines, const PdfColor& color, double lineWidth) {
    if (lines.empty())
        return;
    useStroke(color, lineWidth);
    for (const auto& line : lines) {
        numbers({line.fromX, line.fromY});
        content_ += "m ";
        numbers({line.toX, line.toY});
        content_ += "l\n";
    }
    content_ += "S\n";
}

void PdfCanvas::draw(const PdfImage& image, const PdfRectangle& area) {
    auto known = std::find_if(images_.begin(), images_.end(),
                              [&](const auto& entry) { return entry.first == &image; });
    if (known == images_.end()) {
        const auto entries =
            fmt::format("/Type /XObject /Subtype /Image /Width {} /Height {} /BitsPerComponent 8",
                        image.width, image.height);
        const auto mask = file_.addStream(entries + " /ColorSpace /DeviceGray", image.opacity);
        const auto object = file_.addStream(
            entries + " /ColorSpace /DeviceRGB /SMask " + PdfFile::reference(mask), image.colors);
        known = images_.insert(known, {&image, fmt::format("/Im{}", images_.size())});
        imageNames_ += " " + known->second + " " + PdfFile::reference(object);
    }
    content_ += "q ";
    numbers({area.width, 0, 0, area.height, area.left, area.bottom});
    content_ += "cm " + known->second + " Do Q\n";
}

void PdfCanvas::draw(std::string_view text, const TextPlace& place, const TextStyle& style) {
    if (text.empty() || place.width <= 0)
        return;
    const bool mayNarrow = place.fit == TextFit::NarrowThenCut;
    const double room = place.width / style.size * kThousand;
    fonts_.layOut(text, style.face, mayNarrow ? room / kNarrowest : room, line_);
    const double scale = line_.width > room && mayNarrow ? room / line_.width : 1;
    const double width = line_.width * scale * style.size / kThousand;
    const double left =
        place.alignment == TextAlignment::Right ? place.left + place.width - width : place.left;
    useFillColor(style.color);
    content_ += "BT ";
    if (scale < 1) {
        constexpr double kPercent = 100;
        number(scale * kPercent);
        content_ += "Tz ";
    }
    numbers({left, place.baseline});
    content_ += "Td ";
    if (line_.isShaped)
        showShapedGlyphs(style.size);
    else
        showGlyphs(style.size);
    content_ += scale < 1 ? "100 Tz ET\n" : "ET\n";
}

double PdfCanvas::width(std::string_view text, const TextStyle& style) {
    fonts_.layOut(text, style.face, std::numeric_limits<double>::infinity(), line_);
    return line_.width * style.size / kThousand;
}

std::vector<std::string> PdfCanvas::wrapped(std::string_view text, const TextStyle& style,
                                            double width, std::size_t maximumLines) {
    std::vector<std::string> lines;
    while (!text.empty() && lines.size() + 1 < maximumLines) {
        const auto fitting =
            fonts_.prefixThatFits(text, style.face, width / style.size * kThousand);
        const auto end = breakBefore(text, fitting);
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    if (!text.empty())
        lines.emplace_back(text);
    return lines;
}

void PdfCanvas::number(double value) {
    PdfFile::appendNumber(content_, value);
    content_ += ' ';
}

void PdfCanvas::numbers(std::initializer_list<double> values) {
    for (const double value : values)
        number(value);
}

void PdfCanvas::useFillColor(const PdfColor& color) {
    if (color == fillColor_)
        return;
    fillColor_ = color;
    numbers({color.red, color.green, color.blue});
    content_ += "rg\n";
}

void PdfCanvas::useStroke(const PdfColor& color, double lineWidth) {
    numbers({color.red, color.green, color.blue});
    content_ += "RG ";
    number(lineWidth);
    content_ += "w\n";
}

void PdfCanvas::useFont(std::uint16_t font, double size) {
    if (font == font_ && size == fontSize_)
        return;
    font_ = font;
    fontSize_ = size;
    content_ += fmt::format("/F{} ", font);
    number(size);
    content_ += "Tf ";
}

/// The viewer puts each glyph where the one before it ends, so one string does for all of a font.
void PdfCanvas::showGlyphs(double size) {
    bool isOpen = false;
    for (const auto& glyph : line_.glyphs) {
        if (isOpen && glyph.font != font_) {
            content_ += ")Tj ";
            isOpen = false;
        }
        if (!isOpen) {
            useFont(glyph.font, size);
            content_ += '(';
            isOpen = true;
        }
        appendGlyph(content_, glyph.id);
    }
    if (isOpen)
        content_ += ")Tj ";
}

void PdfCanvas::showShapedGlyphs(double size) {
    for (const auto& glyph : line_.glyphs) {
        useFont(glyph.font, size);
        if (glyph.shiftY != 0) {
            number(static_cast<double>(glyph.shiftY) * size / kThousand);
            content_ += "Ts ";
        }
        content_ += '[';
        number(static_cast<double>(-glyph.shiftX));
        content_ += '(';
        appendGlyph(content_, glyph.id);
        content_ += ") ";
        number(static_cast<double>(fonts_.width(glyph) + glyph.shiftX - glyph.advance));
        content_ += "]TJ ";
        if (glyph.shiftY != 0)
            content_ += "0 Ts ";
    }
}

} // namespace slatewise
