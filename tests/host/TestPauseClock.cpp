// SPDX-License-Identifier: MIT
#include "TestPauseClock.h"

#include "orbel/DriverThreads.h"

namespace hosttest {

void TestPauseClock::threadStarting() {
    ++started_;
}

void TestPauseClock::threadEnding() {
    ++ended_;
}

void TestPauseClock::pause(const timespec& request) {
    std::unique_lock lock(mutex_);
    requests_.push_back(request);
    const uint64_t releasesBefore = releases_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return orbel::endRequested() || releases_ != releasesBefore; });
}

void TestPauseClock::wakeAll() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

bool TestPauseClock::waitForPauses(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10),
                             [&] { return requests_.size() >= count; });
}

void TestPauseClock::release() {
    std::lock_guard lock(mutex_);
    ++releases_;
    changed_.notify_all();
}

std::vector<timespec> TestPauseClock::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

}  // namespace hosttest
