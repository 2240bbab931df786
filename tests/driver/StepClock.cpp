// SPDX-License-Identifier: MIT
#include "StepClock.h"

#include "orbel/DriverThreads.h"

namespace drivertest {

void StepClock::waitUntilPaused() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return paused_; });
}

void StepClock::step(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return paused_; });
    allowed_ += count;
    changed_.notify_all();
    changed_.wait(lock, [this] { return paused_ && entered_ == allowed_ + 1; });
}

void StepClock::threadStarting() {}

void StepClock::threadEnding() {}

void StepClock::pause(const timespec&) {
    std::unique_lock lock(mutex_);
    const long long ticket = ++entered_;
    paused_ = true;
    changed_.notify_all();
    changed_.wait(lock, [&] { return allowed_ >= ticket || orbel::endRequested(); });
    paused_ = false;
}

void StepClock::wakeAll() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

}  // namespace drivertest
