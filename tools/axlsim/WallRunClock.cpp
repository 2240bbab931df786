#include "axlsim/WallRunClock.h"

#include <thread>

namespace axlsim {

WallRunClock::WallRunClock() : start_(std::chrono::steady_clock::now()) {}

std::chrono::nanoseconds WallRunClock::now() const {
    return std::chrono::steady_clock::now() - start_;
}

void WallRunClock::advanceTo(std::chrono::nanoseconds t) {
    std::this_thread::sleep_until(start_ + t);
}

}  // namespace axlsim
