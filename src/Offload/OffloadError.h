#pragma once

#include "Language/SpokenError.h"

#include <cstdint>
#include <exception>
#include <string>
#include <variant>

namespace slatewise {

class L10n;

/// A failure of an offload that has words of its own in both languages.
class OffloadError : public SpokenError {
public:
    /// Byte counts of the source as it stands now and of the copy.
    struct SizeMismatch {
        std::int64_t source, copied;
    };
    /// Byte counts of a file, and of what could be read of it.
    struct EndedEarly {
        std::int64_t size, read;
    };
    /// Byte counts, and the destination by name; empty where there is only one that can be meant.
    struct InsufficientSpace {
        std::int64_t needed, free;
        std::string disk{};
    };
    /// The card's path leads elsewhere now, or nowhere.
    struct CardGone {
        std::string card;
    };
    /// The same of a destination.
    struct DiskReplaced {
        std::string disk;
    };
    struct TemplateLeadsOut {
        std::string pathTemplate;
    };
    struct MissingSelection {};

    using Reason = std::variant<SizeMismatch, EndedEarly, InsufficientSpace, CardGone, DiskReplaced,
                                TemplateLeadsOut, MissingSelection>;

    explicit OffloadError(Reason reason)
        : SpokenError("offload failed"), reason_(std::move(reason)) {}

    const Reason& reason() const noexcept { return reason_; }

    std::string text(L10n l10n) const override;

private:
    Reason reason_;
};

/// What a person should read about any failure: of one that has words of its own, these; of one of
/// the system's, the path that it is about and the reason; of a library's, what `describe` of the
/// failure alone tells.
std::string describe(const std::exception& failure, L10n l10n);
/// The same of one that was kept, which must not be empty.
std::string describe(const std::exception_ptr& failure, L10n l10n);

/// Why a call of the system failed, of its errno value. What cards and disks do not bring about is
/// told in the system's own words, or where those are none of the language's, by its number.
std::string reasonOf(int code, L10n l10n);

} // namespace slatewise
