#pragma once

#include <QCoro/QCoroTask>

#include <chrono>
#include <optional>
#include <stop_token>

namespace slatewise {

/// How long something is waited for that may never end.
struct WaitLimits {
    /// For ever when there is none.
    std::optional<std::chrono::milliseconds> patience{};
    /// Once a stop is requested.
    std::chrono::milliseconds grace{0};
};

/// Waits for the end of `work`, which must not fail, within the limits. Gives whether it has ended;
/// what has not goes on by itself. GUI thread, where the stop must be requested too.
QCoro::Task<bool> waitForEnd(QCoro::Task<> work, std::stop_token stop, WaitLimits limits = {});

} // namespace slatewise
