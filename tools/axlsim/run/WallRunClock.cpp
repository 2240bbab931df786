// SPDX-License-Identifier: MIT
#include "axlsim/run/WallRunClock.h"

#include <algorithm>
#include <thread>

namespace axlsim {

WallRunClock::WallRunClock() : start_(std::chrono::steady_clock::now()) {}

std::chrono::nanoseconds WallRunClock::now() const {
    return std::chrono::steady_clock::now() - start_;
}

void WallRunClock::advanceTo(std::chrono::nanoseconds t) {
    std::this_thread::sleep_until(start_ + t);
}

std::chrono::nanoseconds WallRunClock::runNext(std::chrono::nanoseconds t) {
    using namespace std::chrono_literals;
    std::this_thread::sleep_until(start_ + std::min(t, now() + 1ms));
    const std::chrono::nanoseconds reached = now();
    return reached >= t ? t : reached;
}

}  // namespace axlsim
