// SPDX-License-Identifier: MIT
#include "axlsim/run/VirtualRunClock.h"

namespace axlsim {

// A run, above all a served one, can go on for days; nothing here reads the clock's pause record.
VirtualRunClock::VirtualRunClock() {
    clock_.keepPauses(false);
}

std::chrono::nanoseconds VirtualRunClock::now() const {
    return clock_.now();
}

void VirtualRunClock::holdDrivers() {
    clock_.holdScans(true);
}

void VirtualRunClock::releaseDrivers() {
    clock_.holdScans(false);
}

void VirtualRunClock::advanceTo(std::chrono::nanoseconds t) {
    clock_.runUntil(t);
}

std::chrono::nanoseconds VirtualRunClock::runNext(std::chrono::nanoseconds t) {
    return clock_.runNext(t);
}

}  // namespace axlsim
