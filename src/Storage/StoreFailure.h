#pragma once

#include "Language/L10n.h"

#include <exception>
#include <string>

namespace slatewise::StoreFailure {

/// Why the store could not be opened, read or written, as a person should read it: of what disks
/// bring about, what is told of every other file too. Any thread.
std::string reasonOf(const std::exception& failure, L10n l10n);

} // namespace slatewise::StoreFailure
