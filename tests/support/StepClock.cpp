// SPDX-License-Identifier: MIT
#include "StepClock.h"

#include <algorithm>
#include <chrono>

#include "orbel/DriverThreads.h"

namespace testsupport {

void StepClock::waitUntilPaused() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return paused_ > 0; });
}

void StepClock::step(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return paused_ > 0; });
    allowed_ += count;
    changed_.notify_all();
    changed_.wait(lock, [this] { return paused_ > 0 && entered_ == allowed_ + 1; });
}

bool StepClock::waitForPauses(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10),
                             [&] { return entered_ >= static_cast<long long>(count); });
}

void StepClock::release() {
    std::lock_guard lock(mutex_);
    allowed_ = entered_;
    changed_.notify_all();
}

std::vector<timespec> StepClock::requests() const {
    std::lock_guard lock(mutex_);
    const auto kept = std::min<long long>(entered_, static_cast<long long>(kKeptRequests));
    return {requests_.begin(), requests_.begin() + kept};
}

void StepClock::threadStarting() {
    ++started_;
}

void StepClock::threadEnding() {
    ++ended_;
}

void StepClock::pause(const timespec& request) {
    std::unique_lock lock(mutex_);
    const long long ticket = ++entered_;
    if (ticket <= static_cast<long long>(kKeptRequests)) {
        requests_[static_cast<std::size_t>(ticket - 1)] = request;
    }
    ++paused_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return allowed_ >= ticket || orbel::endRequested(); });
    --paused_;
}

void StepClock::wakeAll() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

}  // namespace testsupport
