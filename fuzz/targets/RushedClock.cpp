// SPDX-License-Identifier: MIT
#include "RushedClock.h"

#include <thread>

namespace fuzz {

RushedClock::RushedClock() {
    orbel::setPauseClock(this);
}

RushedClock::~RushedClock() {
    orbel::setPauseClock(nullptr);
}

void RushedClock::pause(const timespec&) {
    std::this_thread::yield();
}

}  // namespace fuzz
