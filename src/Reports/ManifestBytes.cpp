#include "Reports/ManifestBytes.h"

#include "Platform/Error.h"

#include <fcntl.h>

#include <cerrno>
#include <string_view>

namespace slatewise {

namespace {

/// What some ten million files come to.
constexpr std::int64_t kLargestBytes = std::int64_t{8} << 30;

/// Far more than any line of ours; older versions may have written fewer and longer ones.
constexpr std::size_t kLongestLineBytes = std::size_t{32} << 20;

} // namespace

ManifestBytes::ManifestBytes(const FileBeneath& file)
    : path_(file.path()),
      file_(file.folder.open(file.relative, O_RDONLY | O_NOFOLLOW | O_NONBLOCK)) {
    const auto facts = FileSystem::attributesOf(file_.get());
    if (!facts || facts->type != FileSystem::ItemType::RegularFile)
        throw PosixError("open", path_, facts ? EINVAL : errno);
    if (facts->sizeBytes > kLargestBytes)
        throw PosixError("read", path_, EFBIG);
}

ManifestBytes::int_type ManifestBytes::underflow() {
    const auto count = ::read(file_.get(), buffer_.data(), buffer_.size());
    if (count < 0)
        throw PosixError("read", path_, errno);
    if (count == 0)
        return traits_type::eof();
    const std::string_view text(buffer_.data(), static_cast<std::size_t>(count));
    const auto lineEnd = text.rfind('\n');
    sinceLineEnd_ =
        lineEnd == std::string_view::npos ? sinceLineEnd_ + text.size() : text.size() - lineEnd - 1;
    if (sinceLineEnd_ > kLongestLineBytes)
        throw PosixError("read", path_, EFBIG);
    setg(buffer_.data(), buffer_.data(), buffer_.data() + count);
    return traits_type::to_int_type(buffer_.front());
}

} // namespace slatewise
