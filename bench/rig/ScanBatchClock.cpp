// SPDX-License-Identifier: MIT
#include "ScanBatchClock.h"

#include "orbel/DriverThreads.h"

namespace axlbench {

namespace {

constexpr long kScanPauseNs = 100000000;

}  // namespace

void ScanBatchClock::waitUntilHeld() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return held_; });
}

std::chrono::nanoseconds ScanBatchClock::run(long scans) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return held_; });
    const long holdsBefore = holds_;
    passing_ = scans > 1 ? scans - 1 : 0;
    released_ = true;
    changed_.notify_all();
    changed_.wait(lock, [&] { return held_ && holds_ > holdsBefore; });
    return std::chrono::duration_cast<std::chrono::nanoseconds>(batchEnd_ - batchStart_);
}

void ScanBatchClock::threadStarting() {}

void ScanBatchClock::threadEnding() {}

void ScanBatchClock::pause(const timespec& request) {
    if (request.tv_sec == 0 && request.tv_nsec < kScanPauseNs) {
        return;
    }
    if (passing_ > 0) {
        --passing_;
        return;
    }
    const Clock::time_point end = Clock::now();
    std::unique_lock lock(mutex_);
    batchEnd_ = end;
    held_ = true;
    ++holds_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return released_ || orbel::endRequested(); });
    held_ = false;
    released_ = false;
    batchStart_ = Clock::now();
}

void ScanBatchClock::wakeAll() {
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

}  // namespace axlbench
