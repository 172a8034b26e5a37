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

/// Moves every line behind the first to the right. In JSON a line end is never part of a value.
void appendIndented(std::string& result, std::string_view lines, std::size_t blanks) {
    for (std::size_t end; (end = lines.find('\n')) != std::string_view::npos;
         lines.remove_prefix(end + 1))
        result.append(lines.substr(0, end + 1)).append(blanks, ' ');
    result.append(lines);
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

void prettyText(Value object, const char* listKey, std::size_t itemCount,
                const std::function<Value(std::size_t)>& item,
                const std::function<void(std::string_view)>& put) {
    constexpr std::size_t kDepth = std::size_t{2} * kIndent;
    object[listKey] = Value::array();
    std::string piece = "{";
    bool isFirst = true;
    for (const auto& [key, value] : object.items()) {
        piece += (isFirst ? "\n  " : ",\n  ") + text(key, kIndent) + ": ";
        isFirst = false;
        if (key != listKey || itemCount == 0) {
            appendIndented(piece, text(value, kIndent), kIndent);
            continue;
        }
        for (std::size_t number = 0; number < itemCount; ++number) {
            piece.append(number == 0 ? "[\n" : ",\n").append(kDepth, ' ');
            appendIndented(piece, text(item(number), kIndent), kDepth);
            put(piece);
            piece.clear();
        }
        piece.append("\n").append(kIndent, ' ').append("]");
    }
    put(piece + "\n}");
}

std::string compactText(const Value& value) {
    return text(value, kOneLine);
}

} // namespace slatewise::Json
