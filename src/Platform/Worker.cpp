#include "Platform/Worker.h"

#include <QPromise>
#include <QRunnable>
#include <QThreadPool>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

#include <limits>
#include <memory>
#include <utility>

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

/// A piece of work on its way to its thread.
class Carrier : public QRunnable {
public:
    Carrier(std::shared_ptr<QPromise<void>> done, std::function<void()> work)
        : done_(std::move(done)), work_(std::move(work)) {
#ifdef __SANITIZE_THREAD__
        // The pool is Qt's, which is not built so that its locks can be seen.
        __tsan_release(this);
#endif
    }

    void run() override {
#ifdef __SANITIZE_THREAD__
        __tsan_acquire(this);
#endif
        work_();
        work_ = nullptr;
        done_->finish();
    }

private:
    std::shared_ptr<QPromise<void>> done_;
    std::function<void()> work_;
};

} // namespace

QFuture<void> start(std::function<void()> work) {
    auto done = std::make_shared<QPromise<void>>();
    done->start();
    auto future = done->future();
    // The pool owns it and destroys it on the thread on which it ran.
    pool().start(new Carrier(std::move(done), std::move(work)));
    return future;
}

} // namespace slatewise::WorkerPool
