#include "Batch/TimeLeft.h"

#include "Offload/CopyProgress.h"

#include <fmt/format.h>

namespace slatewise {

namespace {

constexpr double kReadBackCost = 0.5;
/// Below this much of a phase an estimate would only jump about.
constexpr double kLeastEvidence = 0.01;
constexpr std::chrono::seconds kLeastTime{2};

std::chrono::seconds rounded(std::chrono::duration<double> duration) {
    return std::chrono::duration_cast<std::chrono::seconds>(duration +
                                                            std::chrono::milliseconds(500));
}

} // namespace

std::optional<std::chrono::seconds> TimeLeft::update(const OffloadPhase& phase, Time now) {
    const auto* const figures = figuresOf(phase);
    if (!figures || figures->total < 1) {
        *this = {};
        return std::nullopt;
    }
    if (!start_)
        start_ = now;
    const auto left = std::holds_alternative<Phase::Copying>(phase)
                          ? whileCopying(figures->fraction, now)
                          : whileReading(figures->fraction, now);
    // The first moments promise anything.
    return now - *start_ < kLeastTime ? std::nullopt : left;
}

std::optional<std::chrono::seconds> TimeLeft::whileCopying(double fraction, Time now) {
    if (!copyStart_)
        copyStart_ = now;
    const double done = fraction / kCopyShare;
    if (done < kLeastEvidence)
        return std::nullopt;
    const std::chrono::duration<double> whole = (now - *copyStart_) / done;
    return rounded(whole * (1 - done) + whole * kReadBackCost);
}

std::optional<std::chrono::seconds> TimeLeft::whileReading(double fraction, Time now) {
    if (!readingStart_)
        readingStart_ = now;
    // Without a copy before it, reading takes the whole bar.
    const double done = copyStart_ ? (fraction - kCopyShare) / (1 - kCopyShare) : fraction;
    if (done < kLeastEvidence)
        return std::nullopt;
    const std::chrono::duration<double> whole = (now - *readingStart_) / done;
    return rounded(whole * (1 - done));
}

void BatchTimeLeft::beginPair(std::size_t pair, Time now) {
    pair_ = pair;
    pairStart_ = now;
    ofPair_ = {};
}

BatchPace BatchTimeLeft::update(const OffloadPhase& phase, Time now) {
    return {.bytes = bytesAt(phase), .left = leftAt(phase, now)};
}

/// The pair at work knows best what it has to copy.
std::optional<BatchPace::Bytes> BatchTimeLeft::bytesAt(const OffloadPhase& phase) const {
    const auto* const figures = figuresOf(phase);
    if (!figures || figures->bytesTotal < 1)
        return std::nullopt;
    BatchPace::Bytes bytes = {figures->bytesDone, figures->bytesTotal};
    // Those of a batch are read back pair by pair, and no figure would go on growing.
    if (std::holds_alternative<Phase::Verifying>(phase))
        return bytesOfPairs_.size() < 2 ? std::optional(bytes) : std::nullopt;
    for (std::size_t other = 0; other < bytesOfPairs_.size(); ++other) {
        if (other == pair_)
            continue;
        if (bytesOfPairs_[other] < 1)
            return std::nullopt;
        bytes.total += bytesOfPairs_[other];
        if (other < pair_)
            bytes.done += bytesOfPairs_[other];
    }
    return bytes;
}

std::optional<std::chrono::seconds> BatchTimeLeft::leftAt(const OffloadPhase& phase, Time now) {
    const auto left = ofPair_.update(phase, now);
    if (!left || pair_ >= bytesOfPairs_.size())
        return left;
    const std::chrono::duration<double> whole = now - pairStart_ + *left;
    const auto bytes = bytesOfPairs_[pair_];
    std::chrono::duration<double> others{};
    for (auto other = pair_ + 1; other < bytesOfPairs_.size(); ++other) {
        const bool areKnown = bytes > 0 && bytesOfPairs_[other] > 0;
        others +=
            areKnown
                ? whole * (static_cast<double>(bytesOfPairs_[other]) / static_cast<double>(bytes))
                : whole;
    }
    return *left + rounded(others);
}

std::string clockText(std::chrono::seconds duration) {
    const auto seconds = duration.count();
    if (seconds < 3600)
        return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

} // namespace slatewise
