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

void CopyProgress::addCopied(std::int64_t bytes, Time at) {
    bytesDone_ += bytes;
    speed_.add(bytes, at);
}

Phase::Copying CopyProgress::copying(const std::string& file, int index, Time now) {
    return {file,
            std::min(fileCount_, index + 1),
            fileCount_,
            kCopyShare * copiedShare(index),
            speed_.bytesPerSecond(now),
            bytesDone_,
            totalBytes_};
}

double CopyProgress::copiedShare(int index) const {
    if (totalBytes_ >= 1)
        return share(bytesDone_, totalBytes_);
    return fileCount_ > 0 ? share(index, fileCount_) : 1.0;
}

Phase::Verifying CopyProgress::verifying(const std::string& file, int position, int count,
                                         std::int64_t bytesRead, std::int64_t size) {
    const double within = size < 1 ? 0.0 : share(bytesRead, size);
    const double fraction =
        kCopyShare + kVerificationShare * (position + within) / std::max(count, 1);
    return {file, position, count, fraction};
}

} // namespace slatewise
