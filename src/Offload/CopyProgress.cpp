#include "Offload/CopyProgress.h"

#include <algorithm>

namespace slatewise {

namespace {

constexpr double kVerificationShare = 1 - kCopyShare;
constexpr std::chrono::seconds kSpeedWindow{2};

double share(std::int64_t part, std::int64_t whole) {
    return std::min(static_cast<double>(part) / static_cast<double>(whole), 1.0);
}

} // namespace

void SpeedMeter::add(std::int64_t bytes, Time at) {
    samples_.push_back({at, bytes});
    bytes_ += bytes;
    forgetBefore(at - kSpeedWindow);
}

double SpeedMeter::bytesPerSecond(Time now) {
    forgetBefore(now - kSpeedWindow);
    return static_cast<double>(bytes_) / static_cast<double>(kSpeedWindow.count());
}

void SpeedMeter::forgetBefore(Time moment) {
    while (!samples_.empty() && samples_.front().at < moment) {
        bytes_ -= samples_.front().bytes;
        samples_.pop_front();
    }
}

void CopyProgress::add(std::int64_t bytes, Time at) {
    bytesDone_ += bytes;
    speed_.add(bytes, at);
}

Phase::Copying CopyProgress::copying(const std::string& file, int index, Time now) {
    Phase::Copying phase{figures(file, std::min(fileCount_, index + 1), now)};
    phase.fraction = kCopyShare * shareDone(index);
    return phase;
}

Phase::Scanning CopyProgress::hashing(const std::string& file, int index, Time now) {
    Phase::Scanning phase{figures(file, std::min(fileCount_, index + 1), now)};
    phase.fraction = shareDone(index);
    return phase;
}

Phase::Verifying CopyProgress::verifying(const std::string& file, int position,
                                         std::int64_t bytesRead, std::int64_t size, Time now) {
    const double within = size < 1 ? 0.0 : share(bytesRead, size);
    Phase::Verifying phase{figures(file, position, now)};
    phase.fraction =
        kCopyShare + kVerificationShare * (position + within) / std::max(fileCount_, 1);
    return phase;
}

Phase::Figures CopyProgress::figures(const std::string& file, int done, Time now) {
    return {file, done, fileCount_, 0, speed_.bytesPerSecond(now), bytesDone_, totalBytes_};
}

double CopyProgress::shareDone(int index) const {
    if (totalBytes_ >= 1)
        return share(bytesDone_, totalBytes_);
    return fileCount_ > 0 ? share(index, fileCount_) : 1.0;
}

} // namespace slatewise
