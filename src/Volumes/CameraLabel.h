#pragma once

#include "Platform/Text.h"

#include <string>
#include <string_view>

/// The name of the camera unit that a card came from.
namespace slatewise::CameraLabel {

/// Of a card whose unit nobody has named.
inline constexpr std::string_view defaultLabel;

/// As it is stored and as it becomes part of a path: trimmed, "/" replaced by "-".
inline std::string sanitized(std::string_view text) {
    return Text::pathSafeLabel(text);
}

} // namespace slatewise::CameraLabel
