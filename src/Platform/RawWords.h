#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace slatewise {

/// An enumeration whose values stand as words in files and tables. It joins by a function
/// `rawWords(Word)` beside it that gives all words in the order of the enumerators.
template <typename Word>
concept RawWord = requires(Word word) {
    rawWords(word);
};

/// The word of a value. Lives as long as the program.
template <RawWord Word>
constexpr std::string_view rawValue(Word word) {
    return rawWords(word)[static_cast<std::size_t>(word)];
}

/// The value of a word, letter by letter; empty for a word that is none of them.
template <RawWord Word>
constexpr std::optional<Word> fromRawValue(std::string_view text) {
    const auto words = rawWords(Word{});
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end())
        return std::nullopt;
    return static_cast<Word>(found - words.begin());
}

} // namespace slatewise
