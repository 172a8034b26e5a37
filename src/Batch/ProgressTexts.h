#pragma once

#include "Offload/OffloadPhase.h"

#include <string>

namespace slatewise {

struct BatchPace;
class L10n;

/// Where a batch stands.
struct BatchPosition {
    /// Which pair is at work, in words; empty in a batch of one pair.
    std::string label;
    int pairIndex = 0;
    int pairCount = 1;

    friend bool operator==(const BatchPosition&, const BatchPosition&) = default;
};

/// What the progress area says. Functions of values.
namespace ProgressTexts {

/// While the phase is one of a run at work.
bool isBusy(const OffloadPhase& phase);
bool isSuccess(const OffloadPhase& phase);
bool isFailure(const OffloadPhase& phase);

/// 0 to 1, once across the whole batch.
double fraction(const OffloadPhase& phase, const BatchPosition& position);
/// "42%".
std::string percent(double fraction);

/// How much of the bytes is copied or read back, and how long all of it still takes; empty while
/// neither is known.
std::string pace(const BatchPace& pace, L10n l10n);

/// `isHashing` where nothing is to be copied.
std::string title(const OffloadPhase& phase, const BatchPosition& position, L10n l10n,
                  bool isHashing = false);

} // namespace ProgressTexts

} // namespace slatewise
