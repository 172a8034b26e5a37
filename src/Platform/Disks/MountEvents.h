#pragma once

#include "Platform/FileDescriptor.h"

#include <chrono>

namespace slatewise {

/// Waits until something is mounted or unmounted, for one thread; any thread may wake it up.
class MountEvents {
public:
    enum class Source {
        Kernel,
        /// As on a system that tells nothing: only time passes.
        None,
    };

    /// What is mounted from now on is an event.
    explicit MountEvents(Source source);

    /// Returns at the first event since it last returned for one, when woken up, or at the moment
    /// given, whichever comes first. Once woken up it never waits again.
    void waitUntil(std::chrono::steady_clock::time_point moment);

    void wakeUp();

private:
    FileDescriptor table_;
    FileDescriptor wake_;
};

} // namespace slatewise
