// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

namespace axlbench {

// A pause clock that runs the scans of one scanning thread back to back, in batches the caller
// asks for, and holds the thread between batches. The short pauses after the initial
// publications pass at once; a scan pause (100 ms or longer) passes at once while the batch
// lasts and holds the thread when it is over. The time of a batch is taken on the scanning
// thread itself, from leaving the pause that starts it to entering the pause that ends it, so
// that waking the thread is not part of it. Installed while it lives.
class ScanBatchClock final : public orbel::PauseClock {
public:
    // Waits until the scanning thread is held at a scan pause.
    void waitUntilHeld();

    // Lets the held thread run `scans` scans (at least 1) and waits until it is held again.
    // Returns the time those scans took on the scanning thread.
    std::chrono::nanoseconds run(long scans);

    void threadStarting() override;
    void threadEnding() override;
    void pause(const timespec& request) override;
    void wakeAll() override;

private:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex_;
    std::condition_variable changed_;
    long holds_ = 0;  // how often the thread has been held so far
    bool held_ = false;
    bool released_ = false;
    // Scan pauses still to pass in the running batch. Set under the lock while the thread is
    // held; while the batch runs only the scanning thread touches it.
    long passing_ = 0;
    Clock::time_point batchStart_;
    Clock::time_point batchEnd_;
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace axlbench
