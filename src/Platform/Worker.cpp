#include "Platform/Worker.h"

#include <QPromise>
#include <QThreadPool>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

#include <limits>

namespace slatewise::WorkerPool {

namespace {

/// Never destroyed: a pool that goes waits for its threads, and closing the window must not wait
/// for a copy.
QThreadPool& pool() {
    static QThreadPool* const pool = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(std::numeric_limits<int>::max());
        return made;
    }();
    return *pool;
}

/// Tells the sanitizer of threads what it cannot see, Qt not being built with it: that whoever
/// takes over by that address sees all that was done before it was handed over.
void handOver([[maybe_unused]] void* by) {
#ifdef __SANITIZE_THREAD__
    __tsan_release(by);
#endif
}
void takeOver([[maybe_unused]] void* by) {
#ifdef __SANITIZE_THREAD__
    __tsan_acquire(by);
#endif
}

} // namespace

QFuture<void> start(std::function<void()> work) {
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    handOver(promise.get());
    pool().start([promise, work = std::move(work)]() mutable {
        takeOver(promise.get());
        work();
        work = nullptr;
        promise->finish();
    });
    return promise->future();
}

} // namespace slatewise::WorkerPool
