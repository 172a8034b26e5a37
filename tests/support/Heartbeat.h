#pragma once

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>

namespace slatewise::test {

/// Notes the longest time in which the GUI thread has not come round to a timer that is due each
/// millisecond: at work, or waiting for a lock or a disk. What it has waited for a processor that
/// was busy with others is no stall of its own.
class Heartbeat {
public:
    Heartbeat() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.callOnTimeout([this] { beat(); });
        timer_.start(1);
    }

    /// With the one that may have lasted since the last beat. GUI thread.
    std::chrono::milliseconds longest() const {
        const auto stall = std::max(longest_, sinceLastBeat(Clock::now(), waitedForProcessor()));
        return std::chrono::duration_cast<std::chrono::milliseconds>(stall);
    }

private:
    using Clock = std::chrono::steady_clock;

    static Clock::duration waitedForProcessor() {
        std::ifstream file("/proc/thread-self/schedstat");
        std::int64_t onProcessor = 0;
        std::int64_t waiting = 0;
        file >> onProcessor >> waiting;
        return std::chrono::nanoseconds(waiting);
    }

    Clock::duration sinceLastBeat(Clock::time_point now, Clock::duration waited) const {
        return (now - last_) - (waited - lastWaited_);
    }

    void beat() {
        const auto now = Clock::now();
        const auto waited = waitedForProcessor();
        longest_ = std::max(longest_, sinceLastBeat(now, waited));
        last_ = now;
        lastWaited_ = waited;
    }

    QTimer timer_;
    Clock::time_point last_ = Clock::now();
    Clock::duration lastWaited_ = waitedForProcessor();
    Clock::duration longest_{};
};

} // namespace slatewise::test
