#include "Volumes/PropertyReaders.h"

#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace slatewise::PropertyReaders {

namespace {

constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();

std::int64_t wholePart(double number) {
    // 2^63, the first double above the range. Its negative is the lowest number in it.
    constexpr double kBeyond = 9223372036854775808.0;
    const bool fits = number >= -kBeyond && number < kBeyond;
    return fits ? static_cast<std::int64_t>(number) : 0;
}

} // namespace

std::optional<std::string> string(const PropertyValue* value) {
    if (!value)
        return std::nullopt;
    auto text = Text::trimmed(std::visit(
        [](const auto& held) {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, bool>)
                return std::string(held ? "1" : "0");
            else
                return fmt::format("{}", held);
        },
        *value));
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::int64_t int64(const PropertyValue* value) {
    if (!value)
        return 0;
    if (const auto* number = std::get_if<std::int64_t>(value))
        return *number;
    if (const auto* number = std::get_if<std::uint64_t>(value))
        return static_cast<std::int64_t>(std::min(*number, static_cast<std::uint64_t>(kLargest)));
    if (const auto* number = std::get_if<double>(value))
        return wholePart(*number);
    const auto* flag = std::get_if<bool>(value);
    return flag && *flag ? 1 : 0;
}

bool boolean(const PropertyValue* value) {
    if (!value || std::holds_alternative<std::string>(*value))
        return false;
    if (const auto* number = std::get_if<double>(value))
        return *number != 0;
    return int64(value) != 0;
}

} // namespace slatewise::PropertyReaders
