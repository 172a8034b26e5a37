#pragma once

#include "Language/AppLanguage.h"
#include "Storage/StoreRecords.h"
#include "Verify/TreeCheck.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

class L10n;

/// All that is known of a check that has ended. Its texts are made when they are asked for, in
/// whatever language that is.
struct CheckOutcome {
    /// Absent when it was stopped.
    std::optional<CheckRecord> record{};
    /// The first of them.
    std::vector<Verify::Finding> findings{};
    /// What is to be known of the copy beside them.
    std::vector<Verify::Note> notes{};
    /// Beyond the record's numbers, what was read.
    Verify::Result result{};
    /// The disk's name.
    std::string disk{};
    /// Why it came to nothing.
    std::exception_ptr failure{};
    /// Why the store has no word of it.
    std::exception_ptr notStored{};
    /// Stopped, and whoever read has not come back from the disk.
    bool isLeftBehind = false;

    /// Notes a difference, unless there are more than anybody reads.
    void add(const Verify::Finding& finding);

    std::string verdict(AppLanguage language) const;
    /// One line for each thing to be told: what puts all of it in doubt, and then what differs.
    std::string lines(L10n l10n) const;
};

/// What a check came to, with its date.
std::string verdictOf(const CheckRecord& check, AppLanguage language);

/// Why a check came to nothing.
std::string reasonOfNothing(const std::exception_ptr& failure, L10n l10n);

} // namespace slatewise
