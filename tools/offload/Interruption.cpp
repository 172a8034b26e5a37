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
    for (const int signal : {SIGINT, SIGTERM, kEndOfWaiting})
        sigaddset(&signals, signal);
    // Whoever has a program go on when the terminal closes had it ignored. Awaited, it would come.
    struct sigaction hangingUp {};
    if (::sigaction(SIGHUP, nullptr, &hangingUp) != 0 || hangingUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

} // namespace

Interruption::Interruption() {
    const auto signals = awaitedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    waiter_ = std::thread(&Interruption::wait, this);
}

Interruption::~Interruption() {
    isEnding_ = true;
    pthread_kill(waiter_.native_handle(), kEndOfWaiting);
    waiter_.join();
}

void Interruption::wait() {
    const auto signals = awaitedSignals();
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0)
            return;
        // Anybody may send it, as people do who want to see how far a program is.
        if (signal == kEndOfWaiting) {
            if (isEnding_)
                return;
            continue;
        }
        if (!source_.request_stop())
            ::_exit(kExitInterrupted);
    }
}

} // namespace slatewise::tool
