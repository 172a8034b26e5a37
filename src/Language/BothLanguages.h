#pragma once

#include "Language/L10n.h"

#include <concepts>
#include <string>
#include <string_view>

namespace slatewise {

/// A text that is made before anybody knows in which language it will be read: the log is English,
/// and who reads a window may change its language. A value.
struct BothLanguages {
    std::string english{};
    std::string turkish{};

    BothLanguages() = default;

    /// Words that are the same in both, such as those of the system or a library.
    template <std::convertible_to<std::string_view> Words>
    BothLanguages(const Words& words) : english(std::string_view(words)), turkish(english) {}

    /// `wordsIn` gives the text in the language that it is given.
    template <std::invocable<L10n> WordsIn>
    static BothLanguages of(const WordsIn& wordsIn) {
        BothLanguages both;
        both.english = wordsIn(L10n(AppLanguage::English));
        both.turkish = wordsIn(L10n(AppLanguage::Turkish));
        return both;
    }

    const std::string& in(L10n l10n) const { return l10n.isTurkish() ? turkish : english; }

    friend bool operator==(const BothLanguages&, const BothLanguages&) = default;
};

} // namespace slatewise
