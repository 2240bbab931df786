// SPDX-License-Identifier: MIT
#include "orbel/PauseClock.h"

#include <atomic>

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

}  // namespace orbel
