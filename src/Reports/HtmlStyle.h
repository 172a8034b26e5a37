#pragma once

#include <string_view>

/// The style sheets of the HTML reports. A page carries the shared rules and then its own.
namespace slatewise::HtmlStyle {

/// Windows as narrow as this have no room for a table: each row is a block of its own.
inline constexpr std::string_view blocksBelow = "899px";

extern const std::string_view shared;
extern const std::string_view standard;
extern const std::string_view detailed;

} // namespace slatewise::HtmlStyle
