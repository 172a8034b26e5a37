#pragma once

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroTask>

#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

namespace slatewise {

namespace WorkerPool {

/// Runs `work`, which must not throw, on a thread that does nothing else meanwhile. The future ends
/// once `work` is done and destroyed.
///
/// There is a thread for each piece of work, however many there are: a copy that takes hours holds
/// up nothing that is short. Whoever ends the process does not wait for work that still runs.
QFuture<void> start(std::function<void()> work);

} // namespace WorkerPool

namespace WorkerPool {

/// A piece of work and where its result goes.
template <typename Work>
struct Errand {
    using Result = std::invoke_result_t<Work&>;

    void operator()() {
        try {
            if constexpr (std::is_void_v<Result>) {
                work();
                result.set_value();
            } else {
                result.set_value(work());
            }
        } catch (...) {
            result.set_exception(std::current_exception());
        }
    }

    Work work;
    std::promise<Result> result;
};

template <typename Work>
QCoro::Task<std::invoke_result_t<Work&>> run(std::shared_ptr<Errand<Work>> errand) {
    auto result = errand->result.get_future();
    const auto done = start([errand = std::exchange(errand, nullptr)] { (*errand)(); });
    co_await done;
    co_return result.get();
}

} // namespace WorkerPool

/// Work under way, to be awaited once, by its name.
template <typename Result>
class Underway {
public:
    explicit Underway(QCoro::Task<Result> task) : task_(std::move(task)) {}

    auto operator co_await() const& noexcept { return task_.operator co_await(); }
    /// GCC 12 copies a lambda that stands inside a `co_await` byte by byte and destroys both: what
    /// it captured is freed twice. So the work is started in one statement and awaited in another.
    auto operator co_await() && = delete;

    /// For a function that starts work and is no coroutine itself.
    operator QCoro::Task<Result>() && { return std::move(task_); }

private:
    QCoro::Task<Result> task_;
};

/// Runs `work` on a worker, from this moment on, whether or not somebody awaits it:
///
///     const auto reading = onWorker([path] { return readManifest(path); });
///     const auto manifest = co_await reading;
///
/// The awaiting coroutine goes on on the thread that called `onWorker`, which needs an event loop.
/// An exception of the work is thrown there. What the work captured is destroyed on the worker.
template <typename Work>
auto onWorker(Work work) {
    using Errand = WorkerPool::Errand<Work>;
    return Underway(WorkerPool::run(std::make_shared<Errand>(Errand{std::move(work), {}})));
}

} // namespace slatewise
