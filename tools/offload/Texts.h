#pragma once

#include "Language/L10n.h"
#include "Offload/OffloadProblem.h"

#include <optional>
#include <string>
#include <string_view>

namespace slatewise::tool {

/// The sentences that only this program says, in both languages.
class Texts {
public:
    /// What is done before the first file.
    enum class Search { Card, Lists };

    explicit Texts(AppLanguage language, Search search = Search::Card)
        : shared(language), search_(search) {}

    // What is wrong with the command line, or with what it names.

    std::string noFolder(std::string_view path) const;
    std::string namedTwice(std::string_view path) const;
    std::string cardAndDestination(std::string_view path) const;
    std::string doesNotAnswer(std::string_view path) const;
    std::string looksLikeDestination(std::string_view path) const;
    std::string emptyCard(std::string_view path) const;
    std::string emptyCardToHash(std::string_view path) const;

    /// What stands for the camera or the crew of a card.
    struct Word {
        std::string word;
        bool isNamed = true;
        /// The word is part of the path to which the card is copied.
        bool isInPath = true;
    };
    std::string wordsInUse(std::string_view card, const Word& camera, const Word& crew) const;

    /// The words that the command line gives to a card alone.
    std::string ownWords(std::string_view card, const Word& camera, const Word& crew) const;

    // How it goes.

    std::string_view searching() const;
    std::string copying(int number, int count) const;
    std::string verifying(int number, int count) const;
    std::string hashing(int number, int count) const;
    std::string_view stopping() const;

    // What became of it.

    std::string_view notBegun() const;
    /// So many files there are proved though the run failed.
    std::string leftOnDestination(std::string_view sessionRoot, int filesProved) const;
    std::string_view reportsStillWait() const;
    std::string moreProblems(std::size_t count) const;
    std::string moreNotes(std::size_t count) const;
    /// What to do after a failure; without a kind, after any.
    std::string_view advice(std::optional<OffloadProblem::Kind> kind) const;
    /// The same where nothing was to be copied.
    std::string_view hashingAdvice(std::optional<OffloadProblem::Kind> kind) const;

    /// The texts of the application.
    L10n shared;

private:
    std::string described(const Word& word) const;

    template <typename Text>
    Text choose(Text english, Text turkish) const {
        return shared.isTurkish() ? turkish : english;
    }

    Search search_;
};

} // namespace slatewise::tool
