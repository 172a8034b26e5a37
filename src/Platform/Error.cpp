#include "Platform/Error.h"

#include "Platform/Text.h"

#include <system_error>

namespace slatewise {

PosixError::PosixError(const std::string& operation, const std::filesystem::path& path, int code)
    : Error(operation + " " + Text::legible(path.native()) + ": " +
            std::generic_category().message(code)),
      subject_(Text::legible(path.native())), code_(code) {}

NotARegularFile::NotARegularFile(const std::filesystem::path& path)
    : Error(Text::legible(path.native()) + ": it is a FIFO, a socket or a device, not a file"),
      subject_(Text::legible(path.native())) {}

std::string describe(const std::exception& failure) {
    if (const auto* ours = dynamic_cast<const Error*>(&failure))
        return ours->localizedDescription();
    return failure.what();
}

} // namespace slatewise
