// SPDX-License-Identifier: MIT
#include "WallClock.h"

#include "orbel/DriverThreads.h"

namespace soak {

std::vector<WallClock::Pause> WallClock::pausesOf(const CSI_base* driver) const {
    std::lock_guard lock(mutex_);
    const auto it = pauses_.find(driver);
    return it == pauses_.end() ? std::vector<Pause>{} : it->second;
}

void WallClock::pause(const timespec& request) {
    const auto requested =
        std::chrono::seconds(request.tv_sec) + std::chrono::nanoseconds(request.tv_nsec);
    std::unique_lock lock(mutex_);
    const Time began = std::chrono::steady_clock::now();
    woken_.wait_until(lock, began + requested, [] { return orbel::endRequested(); });
    pauses_[orbel::currentThreadDriver()].push_back(
        {requested, began, std::chrono::steady_clock::now()});
}

void WallClock::wakeAll() {
    std::lock_guard lock(mutex_);
    woken_.notify_all();
}

}  // namespace soak
