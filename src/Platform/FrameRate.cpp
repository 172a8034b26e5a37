#include "Platform/FrameRate.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace slatewise {

namespace {

/// Beyond all cameras, and small enough to be multiplied by any number of seconds.
constexpr std::int64_t kFastest = 1'000'000;

} // namespace

std::optional<FrameRate> FrameRate::of(std::int64_t frames, std::int64_t seconds) {
    if (frames < 1 || seconds < 1)
        return std::nullopt;
    const auto common = std::gcd(frames, seconds);
    frames /= common;
    seconds /= common;
    if (frames > kFastest * 1001 || seconds > kFastest * 1001 || frames / seconds > kFastest)
        return std::nullopt;
    return FrameRate(frames, seconds);
}

std::optional<FrameRate> FrameRate::near(double perSecond) {
    if (!(perSecond > 0) || !(perSecond <= static_cast<double>(kFastest)))
        return std::nullopt;
    constexpr double kWholeWithin = 0.001;
    // Some write 23.98 for what is 23.976.
    constexpr double kSlowedWithin = 0.005;
    const double whole = std::round(perSecond);
    const auto frames = static_cast<std::int64_t>(whole);
    if (std::abs(perSecond - whole) < kWholeWithin)
        return of(frames, 1);
    if (std::abs(perSecond - whole * 1000 / 1001) < kSlowedWithin)
        return of(frames * 1000, 1001);
    constexpr std::int64_t kParts = 1000;
    return of(std::llround(perSecond * static_cast<double>(kParts)), kParts);
}

std::int64_t FrameRate::nominal() const {
    return std::max<std::int64_t>((2 * frames_ + seconds_) / (2 * seconds_), 1);
}

} // namespace slatewise
