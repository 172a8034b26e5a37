#include "Platform/Error.h"

#include "Platform/Text.h"

#include <system_error>

namespace slatewise {

namespace {

std::string displayed(const std::filesystem::path& path) {
    // A path may be thousands of characters long; a line that people read may not.
    constexpr std::size_t kLongest = 240;
    return Text::shortened(Text::displayable(path.native()), kLongest);
}

} // namespace

PosixError::PosixError(const std::string& operation, const std::filesystem::path& path, int code)
    : Error(operation + " " + displayed(path) + ": " + std::generic_category().message(code)),
      subject_(displayed(path)), code_(code) {}

std::string describe(const std::exception& failure) {
    if (const auto* ours = dynamic_cast<const Error*>(&failure))
        return ours->localizedDescription();
    return failure.what();
}

} // namespace slatewise
