#include "Pdf/PdfFile.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"

#include <fmt/format.h>
#include <libdeflate.h>
#include <unicode/unistr.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>

namespace slatewise {

namespace {

constexpr std::size_t kWriteBytes = 1 << 20;
/// Pages of hashes and names hardly get smaller beyond this level, they only take longer.
constexpr int kCompressionLevel = 3;

} // namespace

void PdfFile::FreeCompressor::operator()(libdeflate_compressor* compressor) const noexcept {
    ::libdeflate_free_compressor(compressor);
}

PdfFile::PdfFile(const FileBeneath& file)
    : path_(file.path()), file_(file.folder.createAnew(file.relative)),
      compressor_(::libdeflate_alloc_compressor(kCompressionLevel)) {
    if (!compressor_)
        throw std::bad_alloc();
    // Bytes above 127 tell tools that pass files on that this one is not text.
    put("%PDF-1.5\n%\xE2\xE3\xCF\xD3\n");
}

PdfFile::ObjectID PdfFile::reserve() {
    objectOffsets_.push_back(0);
    return static_cast<ObjectID>(objectOffsets_.size());
}

void PdfFile::writeObject(ObjectID id, std::string_view body) {
    objectOffsets_[static_cast<std::size_t>(id) - 1] = offset_;
    put(fmt::format("{} 0 obj\n", id));
    put(body);
    put("\nendobj\n");
}

PdfFile::ObjectID PdfFile::addObject(std::string_view body) {
    const auto id = reserve();
    writeObject(id, body);
    return id;
}

PdfFile::ObjectID PdfFile::addStream(std::string_view entries, std::string_view content) {
    compress(content);
    const auto id = reserve();
    objectOffsets_.back() = offset_;
    put(fmt::format("{} 0 obj\n<< {} /Filter /FlateDecode /Length {} >>\nstream\n", id, entries,
                    compressed_.size()));
    put(compressed_);
    put("\nendstream\nendobj\n");
    return id;
}

void PdfFile::finish(ObjectID catalog, ObjectID information) {
    const auto table = offset_;
    const auto size = objectOffsets_.size() + 1;
    put(fmt::format("xref\n0 {}\n0000000000 65535 f \n", size));
    for (const auto offset : objectOffsets_)
        put(fmt::format("{:010} 00000 n \n", offset));
    put(fmt::format("trailer\n<< /Size {} /Root {} /Info {} >>\nstartxref\n{}\n%%EOF\n", size,
                    reference(catalog), reference(information), table));
    flush();
    if (::fsync(file_.get()) != 0)
        throw PosixError("fsync", path_, errno);
}

std::string PdfFile::reference(ObjectID id) {
    return fmt::format("{} 0 R", id);
}

std::string PdfFile::textString(std::string_view text) {
    const auto units = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    std::string result = "<FEFF";
    for (std::int32_t index = 0; index < units.length(); ++index)
        result += fmt::format("{:04X}", static_cast<unsigned>(units[index]));
    return result + ">";
}

void PdfFile::appendNumber(std::string& out, double value) {
    constexpr int kHundredths = 100;
    auto hundredths = std::llround(value * kHundredths);
    if (hundredths < 0)
        out += '-';
    hundredths = std::abs(hundredths);
    std::array<char, std::numeric_limits<long long>::digits10 + 1> whole;
    const auto end =
        std::to_chars(whole.data(), whole.data() + whole.size(), hundredths / kHundredths).ptr;
    out.append(whole.data(), end);
    const auto fraction = static_cast<int>(hundredths % kHundredths);
    if (fraction == 0)
        return;
    out += '.';
    out += static_cast<char>('0' + fraction / 10);
    if (fraction % 10 != 0)
        out += static_cast<char>('0' + fraction % 10);
}

void PdfFile::compress(std::string_view content) {
    compressed_.resize(::libdeflate_zlib_compress_bound(compressor_.get(), content.size()));
    compressed_.resize(::libdeflate_zlib_compress(compressor_.get(), content.data(), content.size(),
                                                  compressed_.data(), compressed_.size()));
}

void PdfFile::put(std::string_view bytes) {
    pending_ += bytes;
    offset_ += static_cast<std::int64_t>(bytes.size());
    if (pending_.size() >= kWriteBytes)
        flush();
}

void PdfFile::flush() {
    FileSystem::writeAll(file_, pending_, path_);
    pending_.clear();
}

} // namespace slatewise
