#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace slatewise {

/// What a tool of the system may say under one key.
using PropertyValue = std::variant<bool, std::int64_t, std::uint64_t, double, std::string>;

/// What it says about one thing. A key without an answer is left out.
using PropertyList = std::map<std::string, PropertyValue, std::less<>>;

} // namespace slatewise
