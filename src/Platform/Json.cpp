#include "Platform/Json.h"

namespace slatewise::Json {

namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string text(const Value& value, int indent) {
    const auto plain = value.dump(indent, ' ', false, Value::error_handler_t::replace);
    return Text::replaced(plain, "/", "\\/");
}

} // namespace

std::string prettyText(const Value& value) {
    return text(value, kIndent);
}

std::string compactText(const Value& value) {
    return text(value, kOneLine);
}

} // namespace slatewise::Json
