#pragma once

#include "Language/L10n.h"

#include <string>
#include <string_view>

namespace slatewise::tool {

/// The sentences that only this program says, in both languages.
class Texts {
public:
    explicit Texts(AppLanguage language) : shared(language) {}

    std::string timeLeft(std::string_view time) const;
    std::string leftOnDestination(std::string_view sessionRoot) const;
    std::string reportsNotWritten(std::string_view reason) const;
    std::string_view reportsStillWait() const;

    /// The texts of the application.
    L10n shared;
};

} // namespace slatewise::tool
