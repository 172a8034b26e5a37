#include "Interruption.h"

#include "ExitCodes.h"

#include <csignal>
#include <pthread.h>
#include <unistd.h>

namespace slatewise::tool {

namespace {

/// Wakes the waiter when there is nothing more to wait for.
constexpr int kEndOfWaiting = SIGUSR1;

sigset_t awaitedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, kEndOfWaiting})
        sigaddset(&signals, signal);
    return signals;
}

} // namespace

Interruption::Interruption() {
    const auto signals = awaitedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    waiter_ = std::thread(&Interruption::wait, this);
}

Interruption::~Interruption() {
    pthread_kill(waiter_.native_handle(), kEndOfWaiting);
    waiter_.join();
}

void Interruption::wait() {
    const auto signals = awaitedSignals();
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0 || signal == kEndOfWaiting)
            return;
        if (!source_.request_stop())
            ::_exit(kExitInterrupted);
    }
}

} // namespace slatewise::tool
