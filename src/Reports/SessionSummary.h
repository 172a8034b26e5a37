#pragma once

#include "Reports/SessionManifest.h"

#include <string>
#include <vector>

namespace slatewise {

class L10n;

/// What every report says before anything else, in the words of a language: how the session ended,
/// and the facts by which a person knows which session it was.
struct SessionSummary {
    struct Fact {
        std::string label;
        std::string value;
    };

    OutcomeStatus status = OutcomeStatus::Failed;
    /// One word in capitals: "VERIFIED".
    std::string verdict;
    /// What the word means for the card.
    std::string meaning;
    /// Card, camera, crew. Facts that are not known are left out.
    std::vector<Fact> identity;
    /// Start and end.
    std::vector<Fact> times;
    /// Files by their fate, bytes, seconds, speed.
    std::vector<Fact> totals;

    static SessionSummary of(const SessionManifest& manifest, const L10n& l10n);
};

/// "Card A001  ·  Camera CamA".
std::string onOneLine(const std::vector<SessionSummary::Fact>& facts);

} // namespace slatewise
