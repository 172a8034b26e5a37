#pragma once

#include <atomic>
#include <stop_token>
#include <thread>

namespace slatewise::tool {

/// Turns Ctrl-C, a request to terminate and a closed terminal into a request to stop. A second one
/// ends the process at once.
///
/// To be made before any other thread, since it keeps these signals from all of them: no read or
/// write of footage is ever cut short by one.
class Interruption {
public:
    Interruption();
    ~Interruption();

    std::stop_token token() const { return source_.get_token(); }
    bool happened() const { return source_.stop_requested(); }

private:
    void wait();

    std::stop_source source_;
    std::atomic<bool> isEnding_ = false;
    std::thread waiter_;
};

} // namespace slatewise::tool
