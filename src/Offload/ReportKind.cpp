#include "Offload/ReportKind.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <span>

namespace slatewise {

namespace {

constexpr auto kVideo = std::to_array<std::string_view>(
    {"mxf", "mov", "mp4", "m4v", "mts", "m2ts", "r3d", "braw", "ari", "mkv", "avi"});
constexpr auto kAudio =
    std::to_array<std::string_view>({"wav", "aif", "aiff", "mp3", "aac", "m4a", "ogg"});
constexpr auto kImage =
    std::to_array<std::string_view>({"jpg", "jpeg", "png", "tif", "tiff", "dng", "arw", "cr2",
                                     "cr3", "nef", "raf", "heic", "webp"});
constexpr auto kSidecar = std::to_array<std::string_view>(
    {"xml", "xmp", "bim", "bin", "cub", "cube", "json", "csv", "txt", "html", "pdf"});

bool holds(std::span<const std::string_view> extensions, std::string_view extension) {
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

} // namespace

std::string_view rawValue(ReportKind kind) {
    constexpr auto names =
        std::to_array<std::string_view>({"folder", "video", "audio", "image", "sidecar", "file"});
    return names.at(static_cast<std::size_t>(kind));
}

ReportKind reportKindOf(std::string_view fileName) {
    const auto extension = lowercasedExtension(fileName);
    if (holds(kVideo, extension))
        return ReportKind::Video;
    if (holds(kAudio, extension))
        return ReportKind::Audio;
    if (holds(kImage, extension))
        return ReportKind::Image;
    return holds(kSidecar, extension) ? ReportKind::Sidecar : ReportKind::File;
}

std::string lowercasedExtension(std::string_view fileName) {
    if (const auto slash = fileName.rfind('/'); slash != std::string_view::npos)
        fileName.remove_prefix(slash + 1);
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    return Text::asciiLowercased(fileName.substr(dot + 1));
}

} // namespace slatewise
