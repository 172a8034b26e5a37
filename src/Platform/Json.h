#pragma once

#include "Platform/Clock.h"
#include "Platform/Error.h"
#include "Platform/RawWords.h"
#include "Platform/Text.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>

/// Reading and writing JSON objects field by field: an absent value is left out and never written
/// as null, dates are ISO 8601 text in UTC. Include it in source files only: it is slow to compile.
namespace slatewise::Json {

using Value = nlohmann::json;

/// What a record of ours can hold in one field. A record that is itself a field joins by
/// overloading `toJson` and `fromJson` in its own namespace.
inline Value toJson(const std::string& text) {
    return Text::displayable(text);
}
inline Value toJson(Instant moment) {
    return Clock::iso8601(moment);
}
inline Value toJson(const std::vector<std::string>& texts) {
    Value list = Value::array();
    for (const auto& text : texts)
        list.push_back(toJson(text));
    return list;
}
template <typename Number>
requires std::is_arithmetic_v<Number> Value toJson(Number number) {
    return number;
}
template <RawWord Word>
Value toJson(Word word) {
    return std::string(rawValue(word));
}

// The library would make numbers of `true` and cut off what does not fit; these fail with `Error`.
void fromJson(const Value& value, std::int64_t& result);
void fromJson(const Value& value, int& result);
void fromJson(const Value& value, double& result);
template <typename T>
void fromJson(const Value& value, T& result) {
    value.get_to(result);
}
template <RawWord Word>
void fromJson(const Value& value, Word& result) {
    const auto word = fromRawValue<Word>(value.get<std::string>());
    if (!word)
        throw Error("not a word of ours: " + value.get<std::string>());
    result = *word;
}
inline void fromJson(const Value& value, Instant& result) {
    const auto moment = Clock::fromIso8601(value.get<std::string>());
    if (!moment)
        throw Error("not a date: " + value.get<std::string>());
    result = *moment;
}

template <typename T>
void put(Value& object, const char* key, const T& value) {
    object[key] = toJson(value);
}
template <typename T>
void put(Value& object, const char* key, const std::optional<T>& value) {
    if (value)
        object[key] = toJson(*value);
}

/// Reads the field if the object has it and it is not null. Fails with an exception of the JSON
/// library, or with `Error`, when it is of another type.
template <typename T>
void getIfPresent(const Value& object, const char* key, T& result) {
    if (const auto found = object.find(key); found != object.end() && !found->is_null())
        fromJson(*found, result);
}
template <typename T>
void getIfPresent(const Value& object, const char* key, std::optional<T>& result) {
    if (const auto found = object.find(key); found != object.end() && !found->is_null())
        fromJson(*found, result.emplace());
}

/// As `getIfPresent`, but an absent field or null is a failure.
template <typename T>
void get(const Value& object, const char* key, T& result) {
    fromJson(object.at(key), result);
}
template <typename T>
void get(const Value& object, const char* key, std::optional<T>& result) {
    fromJson(object.at(key), result.emplace());
}

/// Pretty-printed UTF-8, keys sorted, "/" written as "\/" so that the text may stand inside a page.
std::string prettyText(const Value& value);

/// As `prettyText` of the object with one more field, a list, whose items are asked for one after
/// the other, and whose text is passed on piece by piece: neither has to be in memory as a whole.
void prettyText(Value object, const char* listKey, std::size_t itemCount,
                const std::function<Value(std::size_t)>& item,
                const std::function<void(std::string_view)>& put);

/// The text of a value on one line.
std::string compactText(const Value& value);

} // namespace slatewise::Json
