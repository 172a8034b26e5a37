#include "Platform/Json.h"

#include <cmath>
#include <utility>

namespace slatewise::Json {

namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string text(const Value& value, int indent) {
    const auto plain = value.dump(indent, ' ', false, Value::error_handler_t::replace);
    return Text::replaced(plain, "/", "\\/");
}

/// Whole numbers up to here are exact in a double.
constexpr double kLargestExact = 9007199254740992.0;

std::optional<std::int64_t> wholeNumber(const Value& value) {
    if (value.is_number_unsigned() && !std::in_range<std::int64_t>(value.get<std::uint64_t>()))
        return std::nullopt;
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    if (!value.is_number_float())
        return std::nullopt;
    const auto number = value.get<double>();
    if (std::abs(number) > kLargestExact || number != std::trunc(number))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

} // namespace

void fromJson(const Value& value, std::int64_t& result) {
    const auto number = wholeNumber(value);
    if (!number)
        throw Error("not a whole number that fits: " + text(value, kOneLine));
    result = *number;
}

void fromJson(const Value& value, int& result) {
    std::int64_t number = 0;
    fromJson(value, number);
    if (!std::in_range<int>(number))
        throw Error("too large: " + std::to_string(number));
    result = static_cast<int>(number);
}

void fromJson(const Value& value, double& result) {
    if (!value.is_number())
        throw Error("not a number: " + text(value, kOneLine));
    result = value.get<double>();
}

std::string prettyText(const Value& value) {
    return text(value, kIndent);
}

std::string compactText(const Value& value) {
    return text(value, kOneLine);
}

} // namespace slatewise::Json
