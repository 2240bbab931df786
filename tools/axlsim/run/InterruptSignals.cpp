// SPDX-License-Identifier: MIT
#include "axlsim/run/InterruptSignals.h"

#include <atomic>

namespace axlsim {

namespace {

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "set from a signal handler");

extern "C" void noteSignal(int signal) {
    receivedSignal.store(signal);
}

}  // namespace

InterruptSignals::InterruptSignals() {
    receivedSignal.store(0);
    struct sigaction action {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, &previousInterrupt_);
    sigaction(SIGTERM, &action, &previousTerminate_);
}

InterruptSignals::~InterruptSignals() {
    sigaction(SIGINT, &previousInterrupt_, nullptr);
    sigaction(SIGTERM, &previousTerminate_, nullptr);
}

int receivedInterrupt() {
    return receivedSignal.load();
}

std::string signalName(int signal) {
    switch (signal) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        default:
            return "signal " + std::to_string(signal);
    }
}

}  // namespace axlsim
