#include "Batch/Waiting.h"

#include <QCoro/QCoroFuture>
#include <QPromise>
#include <QTimer>

#include <memory>
#include <utility>

namespace slatewise {

namespace {

/// The first word counts.
using Answer = std::shared_ptr<QPromise<bool>>;

void giveAnswer(const Answer& answer, bool hasEnded) {
    answer->addResult(hasEnded);
    answer->finish();
}

QCoro::Task<> tellEnd(QCoro::Task<> work, Answer answer) {
    co_await work;
    giveAnswer(answer, true);
}

} // namespace

QCoro::Task<bool> waitForEnd(QCoro::Task<> work, std::stop_token stop, WaitLimits limits) {
    const auto answer = std::make_shared<QPromise<bool>>();
    answer->start();
    const auto giveUpAfter = [answer](std::chrono::milliseconds time) {
        QTimer::singleShot(time, [answer] { giveAnswer(answer, false); });
    };
    if (limits.patience)
        giveUpAfter(*limits.patience);
    const std::stop_callback stopped(std::move(stop), [&] { giveUpAfter(limits.grace); });
    tellEnd(std::move(work), answer);
    const auto ending = answer->future();
    co_await ending;
    co_return ending.resultAt(0);
}

} // namespace slatewise
