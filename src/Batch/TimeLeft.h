#pragma once

#include "Offload/OffloadPhase.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// Estimates how long a run still takes, from how its phases have moved so far. Reading back is
/// taken to cost half of what copying costs until it has been seen.
class TimeLeft {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Takes note of a phase and gives the estimate; empty as long as there is nothing to go by.
    std::optional<std::chrono::seconds> update(const OffloadPhase& phase, Time now);

private:
    std::optional<std::chrono::seconds> whileCopying(double fraction, Time now);
    std::optional<std::chrono::seconds> whileReading(double fraction, Time now);

    /// Of the first phase that moves.
    std::optional<Time> start_;
    std::optional<Time> copyStart_;
    std::optional<Time> readingStart_;
};

/// How a batch gets on, as far as that is known.
struct BatchPace {
    struct Bytes {
        std::int64_t done = 0;
        std::int64_t total = 0;
        friend bool operator==(const Bytes&, const Bytes&) = default;
    };
    /// Of all pairs, while what the others have to copy is known. While one is read back, only
    /// where it is the only one.
    std::optional<Bytes> bytes{};
    std::optional<std::chrono::seconds> left{};

    friend bool operator==(const BatchPace&, const BatchPace&) = default;
};

/// Estimates the same for a batch: what is left of the pair at work, and what the pairs behind it
/// are likely to take, going by the one at work and by how much each has to copy.
class BatchTimeLeft {
public:
    using Time = TimeLeft::Time;

    BatchTimeLeft() = default;
    /// Bytes of each pair in their order; 0 where nobody knows.
    explicit BatchTimeLeft(std::vector<std::int64_t> bytesOfPairs)
        : bytesOfPairs_(std::move(bytesOfPairs)) {}

    void beginPair(std::size_t pair, Time now);
    BatchPace update(const OffloadPhase& phase, Time now);

private:
    std::optional<BatchPace::Bytes> bytesAt(const OffloadPhase& phase) const;
    std::optional<std::chrono::seconds> leftAt(const OffloadPhase& phase, Time now);

    std::vector<std::int64_t> bytesOfPairs_;
    std::size_t pair_ = 0;
    Time pairStart_;
    TimeLeft ofPair_;
};

/// "1:02:03", or "2:03" below an hour.
std::string clockText(std::chrono::seconds duration);

} // namespace slatewise
