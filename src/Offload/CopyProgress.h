#pragma once

#include "Offload/OffloadPhase.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>

namespace slatewise {

/// Where on the one bar of a run copying ends and reading back begins.
inline constexpr double kCopyShare = 0.85;

/// Bytes per second over the last two seconds.
class SpeedMeter {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Moments never go back, neither here nor below.
    void add(std::int64_t bytes, Time at);

    /// Every chunk of the last two seconds counts, so the figure climbs during the first two.
    double bytesPerSecond(Time now);

private:
    struct Sample {
        Time at;
        std::int64_t bytes;
    };
    void forgetBefore(Time moment);

    /// Of the last two seconds, oldest first, and the sum of their bytes: with many small files
    /// they are too many to be added up for each.
    std::deque<Sample> samples_;
    std::int64_t bytes_ = 0;
};

/// The figures of one pass over all files: how far copying, reading back, or hashing alone moves
/// the one bar of a run.
class CopyProgress {
public:
    using Time = SpeedMeter::Time;

    CopyProgress(int fileCount, std::int64_t totalBytes)
        : fileCount_(fileCount), totalBytes_(totalBytes) {}

    void add(std::int64_t bytes, Time at);
    std::int64_t bytesDone() const { return bytesDone_; }

    /// While the file at `index`, from 0, is copied.
    Phase::Copying copying(const std::string& file, int index, Time now);

    /// The same while it is read and nothing is copied.
    Phase::Scanning hashing(const std::string& file, int index, Time now);

    /// While the copy at `position`, from 0, is read back, `bytesRead` of its `size` so far.
    Phase::Verifying verifying(const std::string& file, int position, std::int64_t bytesRead,
                               std::int64_t size, Time now);

private:
    /// With nothing of the bar filled in.
    Phase::Figures figures(const std::string& file, int done, Time now);
    double shareDone(int index) const;

    int fileCount_;
    std::int64_t totalBytes_;
    std::int64_t bytesDone_ = 0;
    SpeedMeter speed_;
};

} // namespace slatewise
