#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace slatewise {

/// Where an offload stands: the one value by which progress travels.
namespace Phase {

struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
};
struct Scanning {
    friend bool operator==(const Scanning&, const Scanning&) = default;
};
struct Copying {
    /// Path of the file at hand under the card's root.
    std::string file;
    /// Number of the file at hand, from 1.
    int done = 0;
    int total = 0;
    /// Of the whole run, 0 to 1.
    double fraction = 0;
    double bytesPerSecond = 0;
    /// Of all files of the run; a total of 0 is unknown.
    std::int64_t bytesDone = 0;
    std::int64_t bytesTotal = 0;
    friend bool operator==(const Copying&, const Copying&) = default;
};
struct Verifying {
    std::string file;
    /// Files finished, from 0.
    int done = 0;
    int total = 0;
    double fraction = 0;
    friend bool operator==(const Verifying&, const Verifying&) = default;
};
struct Verified {
    /// Each once, on however many disks it now is.
    int files = 0;
    std::int64_t bytes = 0;
    int disks = 1;
    friend bool operator==(const Verified&, const Verified&) = default;
};
struct Hashed {
    int files = 0;
    friend bool operator==(const Hashed&, const Hashed&) = default;
};
struct Failed {
    std::string message;
    friend bool operator==(const Failed&, const Failed&) = default;
};

} // namespace Phase

using OffloadPhase = std::variant<Phase::Idle, Phase::Scanning, Phase::Copying, Phase::Verifying,
                                  Phase::Verified, Phase::Hashed, Phase::Failed>;

} // namespace slatewise
