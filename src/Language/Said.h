#pragma once

#include <fmt/format.h>

#include <string>

namespace slatewise {

/// A sentence in one of the two languages, with what it speaks of in its places: the same, in the
/// same order, in both.
template <typename... Parts>
std::string said(bool isTurkish, fmt::format_string<const Parts&...> english,
                 fmt::format_string<const Parts&...> turkish, const Parts&... parts) {
    return fmt::format(isTurkish ? turkish : english, parts...);
}

} // namespace slatewise
