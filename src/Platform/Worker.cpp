#include "Platform/Worker.h"

#include <QPromise>
#include <QThreadPool>

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

} // namespace

QFuture<void> start(std::function<void()> work) {
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    pool().start([promise, work = std::move(work)]() mutable {
        work();
        work = nullptr;
        promise->finish();
    });
    return promise->future();
}

} // namespace slatewise::WorkerPool
