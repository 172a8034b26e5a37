#include "Pdf.h"

#include <gtest/gtest.h>
#include <poppler-qt6.h>

#include <algorithm>
#include <stdexcept>

namespace slatewise::test {

namespace {

std::unique_ptr<Poppler::Document> open(const std::filesystem::path& file) {
    Poppler::setDebugErrorFunction(
        [](const QString& complaint, const QVariant&) { ADD_FAILURE() << complaint.toStdString(); },
        {});
    auto document = Poppler::Document::load(QString::fromStdString(file));
    if (!document)
        throw std::runtime_error("no PDF: " + file.native());
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    return document;
}

/// Calls `visit` with every page and its number.
template <typename Visit>
void forEachPage(const std::filesystem::path& file, Visit&& visit) {
    const auto document = open(file);
    for (int page = 0; page < document->numPages(); ++page)
        visit(*document->page(page), page + 1);
}

} // namespace

std::string pdfText(const std::filesystem::path& file) {
    std::string text;
    forEachPage(
        file, [&](const Poppler::Page& page, int) { text += page.text({}).toStdString() + "\n"; });
    return text;
}

std::vector<PdfWord> pdfWords(const std::filesystem::path& file) {
    std::vector<PdfWord> words;
    forEachPage(file, [&](const Poppler::Page& page, int number) {
        for (const auto& word : page.textList()) {
            const auto box = word->boundingBox();
            words.push_back({number, box.left(), box.top(), box.right(), box.bottom(),
                             word->text().toStdString()});
        }
    });
    return words;
}

QImage pdfPicture(const std::filesystem::path& file, int page) {
    constexpr int kPointsPerInch = 72;
    constexpr double kResolution = kPointsPerInch * kPixelsPerPoint;
    return open(file)->page(page - 1)->renderToImage(kResolution, kResolution);
}

std::vector<PdfWord> wordsLike(const std::vector<PdfWord>& words, const std::string& text) {
    std::vector<PdfWord> result;
    std::copy_if(words.begin(), words.end(), std::back_inserter(result),
                 [&](const auto& word) { return word.text == text; });
    return result;
}

QColor pdfStrongestColor(const std::filesystem::path& file, const PdfWord& word) {
    const auto picture = pdfPicture(file, word.page);
    QColor strongest = Qt::white;
    for (double y = word.top; y < word.bottom; y += 1.0 / kPixelsPerPoint) {
        for (double x = word.left; x < word.right; x += 1.0 / kPixelsPerPoint) {
            const auto color = picture.pixelColor(static_cast<int>(x * kPixelsPerPoint),
                                                  static_cast<int>(y * kPixelsPerPoint));
            if (color.hsvSaturation() > strongest.hsvSaturation())
                strongest = color;
        }
    }
    return strongest;
}

PdfArea pdfRedArea(const std::filesystem::path& file, int page) {
    constexpr int kClearly = 60;
    constexpr double kPixel = 1.0 / kPixelsPerPoint;
    const auto picture = pdfPicture(file, page);
    PdfArea area;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const auto color = picture.pixelColor(x, y);
            if (color.red() - std::max(color.green(), color.blue()) < kClearly)
                continue;
            ++area.pixels;
            area.box |= QRectF(x * kPixel, y * kPixel, kPixel, kPixel);
        }
    }
    return area;
}

std::vector<std::pair<double, double>> pdfPageSizes(const std::filesystem::path& file) {
    std::vector<std::pair<double, double>> sizes;
    forEachPage(file, [&](const Poppler::Page& page, int) {
        sizes.emplace_back(page.pageSizeF().width(), page.pageSizeF().height());
    });
    return sizes;
}

PdfFontCounts pdfFonts(const std::filesystem::path& file) {
    PdfFontCounts counts;
    for (const auto& font : open(file)->fonts()) {
        ++counts.all;
        counts.embedded += font.isEmbedded() ? 1 : 0;
    }
    return counts;
}

} // namespace slatewise::test
