#pragma once

#include "Language/L10n.h"

#include <string>

namespace slatewise {

/// Why a profile of the reporting service that is there is not used. A value; its sentence is made
/// in whatever language it is read in. It repeats nothing that the file holds: there is a token in
/// it.
struct ProfileRefusal {
    enum class Kind {
        NotRead,
        IsNoFile,
        OpenToOthers,
        TooLarge,
        IsNoObject,
        LacksText,
        OpenAddress
    };

    Kind kind{};
    /// The file's path, or the key that is missing.
    std::string subject{};
    /// The errno value behind it; 0 where there is none.
    int code = 0;

    std::string text(L10n l10n) const;

    friend bool operator==(const ProfileRefusal&, const ProfileRefusal&) = default;
};

} // namespace slatewise
