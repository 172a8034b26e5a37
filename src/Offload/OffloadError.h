#pragma once

#include "Platform/Error.h"

#include <cstdint>
#include <string>
#include <variant>

namespace slatewise {

/// A failure of an offload that has words of its own in both languages.
class OffloadError : public Error {
public:
    /// Byte counts of the source as it stands now and of the copy.
    struct SizeMismatch {
        std::int64_t source, copied;
    };
    struct HashMismatch {
        std::string path;
    };
    /// Byte counts.
    struct InsufficientSpace {
        std::int64_t needed, free;
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
    struct MissingUnit {};
    struct NotAppleSilicon {};
    struct Cancelled {};

    using Reason =
        std::variant<SizeMismatch, HashMismatch, InsufficientSpace, CardGone, DiskReplaced,
                     TemplateLeadsOut, MissingSelection, MissingUnit, NotAppleSilicon, Cancelled>;

    explicit OffloadError(Reason reason) : Error("offload failed"), reason_(std::move(reason)) {}

    const Reason& reason() const noexcept { return reason_; }

    /// In the language that is stored at the moment of asking.
    std::string localizedDescription() const override;

private:
    Reason reason_;
};

} // namespace slatewise
