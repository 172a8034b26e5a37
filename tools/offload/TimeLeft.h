#pragma once

#include "Offload/OffloadPhase.h"

#include <chrono>
#include <optional>
#include <string>

namespace slatewise::tool {

/// Estimates how long a run still takes, from how its phases have moved so far. Reading back is
/// taken to cost half of what copying costs until it has been seen.
class TimeLeft {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Takes note of a phase and gives the estimate; empty as long as there is nothing to go by.
    std::optional<std::chrono::seconds> update(const OffloadPhase& phase, Time now);

private:
    std::optional<std::chrono::seconds> whileCopying(double fraction, Time now);
    std::optional<std::chrono::seconds> whileVerifying(double fraction, Time now);

    std::optional<Time> copyStart_;
    std::optional<Time> verificationStart_;
};

/// "1:02:03", or "2:03" below an hour.
std::string clockText(std::chrono::seconds duration);

} // namespace slatewise::tool
