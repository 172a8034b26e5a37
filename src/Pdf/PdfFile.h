#pragma once

#include "Platform/Files/RootFolder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct libdeflate_compressor;

namespace slatewise {

/// A PDF file as it grows: numbered objects in any order, then the table that says where each lies.
/// What was handed over is written out soon, so a long document needs no more memory than a short
/// one. For one thread. Everything that touches the disk fails with `PosixError`; a file that was
/// begun stays as it is then.
class PdfFile {
public:
    using ObjectID = int;

    /// Makes the file in the place of whatever bears its name.
    explicit PdfFile(const FileBeneath& file);

    /// A number for an object that is written later, or has to be named before it is written.
    ObjectID reserve();

    void writeObject(ObjectID id, std::string_view body);
    ObjectID addObject(std::string_view body);

    /// A compressed stream. `entries` go into its dictionary, beside those for length and filter.
    ObjectID addStream(std::string_view entries, std::string_view content);

    /// Writes the table and waits until all is on the disk. Every reserved object must be written.
    void finish(ObjectID catalog, ObjectID information);

    /// "12 0 R": how one object names another.
    static std::string reference(ObjectID id);

    /// Any text (UTF-8) as a string object.
    static std::string textString(std::string_view text);

    /// A number in the page's own precision, a hundredth of a point.
    static void appendNumber(std::string& out, double value);

private:
    struct FreeCompressor {
        void operator()(libdeflate_compressor* compressor) const noexcept;
    };

    /// Into `compressed_`.
    void compress(std::string_view content);
    void put(std::string_view bytes);
    void flush();

    std::filesystem::path path_;
    FileDescriptor file_;
    std::string pending_;
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor_;
    std::string compressed_;
    std::int64_t offset_ = 0;
    /// Where each object lies, by its number less one.
    std::vector<std::int64_t> objectOffsets_;
};

} // namespace slatewise
