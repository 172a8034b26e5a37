#include "Reports/ReportLogo.h"

#include <QImage>

#include <memory>

namespace slatewise::ReportLogo {

namespace {

/// Enough for sharp print at the size that reports show it in.
constexpr int kPixels = 128;

std::unique_ptr<const PdfImage> load() {
    auto pixels = QImage(":/slatewise/AppLogo.png");
    if (pixels.isNull())
        return nullptr;
    pixels = pixels.scaled(kPixels, kPixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                 .convertToFormat(QImage::Format_RGBA8888);
    auto image = std::make_unique<PdfImage>();
    image->width = pixels.width();
    image->height = pixels.height();
    for (int row = 0; row < pixels.height(); ++row) {
        const auto* line = reinterpret_cast<const char*>(pixels.constScanLine(row));
        for (int column = 0; column < pixels.width(); ++column) {
            constexpr std::ptrdiff_t kBytesPerPixel = 4;
            const auto* pixel = line + column * kBytesPerPixel;
            image->colors.append(pixel, 3);
            image->opacity += pixel[3];
        }
    }
    return image;
}

} // namespace

const PdfImage* image() {
    static const auto loaded = load();
    return loaded.get();
}

} // namespace slatewise::ReportLogo
