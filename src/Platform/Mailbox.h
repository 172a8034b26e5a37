#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace slatewise {

/// Values on their way from one thread to another, in the order in which they were put. Any thread.
///
/// It holds whatever it is given: who uses it sees to it that only so much is on its way.
template <typename Value>
class Mailbox {
public:
    void put(Value value) {
        {
            const std::lock_guard lock(mutex_);
            values_.push_back(std::move(value));
        }
        arrival_.notify_one();
    }

    /// Waits for a value. Empty when asked to stop and there is none.
    std::optional<Value> take(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        arrival_.wait(lock, stop, [this] { return !values_.empty(); });
        return takeFirst();
    }

    /// Empty when there is none at the moment.
    std::optional<Value> takeIfAny() {
        const std::lock_guard lock(mutex_);
        return takeFirst();
    }

private:
    std::optional<Value> takeFirst() {
        if (values_.empty())
            return std::nullopt;
        std::optional<Value> first(std::move(values_.front()));
        values_.pop_front();
        return first;
    }

    std::mutex mutex_;
    std::condition_variable_any arrival_;
    std::deque<Value> values_;
};

} // namespace slatewise
