#pragma once

#include <cstdint>
#include <optional>

namespace slatewise {

/// How many frames there are in a second, as an exact fraction: counted over a day, 23.976 and
/// 24000/1001 are two frames apart.
class FrameRate {
public:
    /// So many frames in so many seconds. Nothing for a rate that no clip can have.
    static std::optional<FrameRate> of(std::int64_t frames, std::int64_t seconds);

    /// The rate that a decimal number stands for: 24000/1001 for 23.976 and for 23.98. Nothing for
    /// one that no clip can have.
    static std::optional<FrameRate> near(double perSecond);

    std::int64_t frames() const { return frames_; }
    std::int64_t seconds() const { return seconds_; }
    double perSecond() const {
        return static_cast<double>(frames_) / static_cast<double>(seconds_);
    }

    /// How many frames a timecode at this rate counts in what it calls a second; at least 1.
    std::int64_t nominal() const;

    friend bool operator==(const FrameRate&, const FrameRate&) = default;

private:
    /// In lowest terms.
    FrameRate(std::int64_t frames, std::int64_t seconds) : frames_(frames), seconds_(seconds) {}

    std::int64_t frames_;
    std::int64_t seconds_;
};

} // namespace slatewise
