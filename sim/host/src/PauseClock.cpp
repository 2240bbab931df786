// SPDX-License-Identifier: MIT
#include "orbel/PauseClock.h"

#include <atomic>
#include <stdexcept>

namespace orbel {

namespace {

std::atomic<PauseClock*> installedClock{nullptr};

}  // namespace

void setPauseClock(PauseClock* clock) {
    installedClock.store(clock);
}

PauseClock* pauseClock() {
    return installedClock.load();
}

void installPauseClock(PauseClock& clock) {
    if (pauseClock() != nullptr) {
        throw std::logic_error("A pause clock is already installed");
    }
    setPauseClock(&clock);
}

void uninstallPauseClock(PauseClock&) {
    setPauseClock(nullptr);
}

}  // namespace orbel
