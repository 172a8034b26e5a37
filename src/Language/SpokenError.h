#pragma once

#include "Platform/Error.h"

#include <string>

namespace slatewise {

class L10n;

/// A failure that has words of its own in both languages.
class SpokenError : public Error {
public:
    using Error::Error;

    /// One sentence.
    virtual std::string text(L10n l10n) const = 0;

    /// In the language that is stored at the moment of asking.
    std::string localizedDescription() const override;
};

} // namespace slatewise
