#include "axlsim/VirtualRunClock.h"

namespace axlsim {

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
