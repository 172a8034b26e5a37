#pragma once

#include <string>

namespace slatewise {

class L10n;

/// Why something that the user asked for did not happen. A value; its sentence is made in whatever
/// language it is read in.
struct Notice {
    enum class Kind { CardWithoutUnit, CardAsDestination, TemplateLeadsOut };

    Kind kind{};
    /// The card or the template that it is about.
    std::string subject;
    /// The id of the card, if it is one.
    std::string cardID{};

    std::string text(L10n l10n) const;

    friend bool operator==(const Notice&, const Notice&) = default;
};

} // namespace slatewise
