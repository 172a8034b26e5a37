#pragma once

#include <string_view>

/// The style sheets of the HTML reports. A page carries the shared rules and then its own.
namespace slatewise::HtmlStyle {

extern const std::string_view shared;
extern const std::string_view standard;
extern const std::string_view detailed;

} // namespace slatewise::HtmlStyle
