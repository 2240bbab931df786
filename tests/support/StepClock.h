// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <mutex>
#include <vector>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

namespace testsupport {

// A pause clock whose pauses last until the test lets them through or the thread's end is
// requested, so that a test walks driver threads from pause to pause. Unlike vplc::VirtualClock
// a pause allocates nothing (it keeps the first kKeptRequests requests in place): tests that
// count allocations on a driver thread use it. Installed while it lives.
class StepClock final : public orbel::PauseClock {
public:
    static constexpr std::size_t kKeptRequests = 64;

    // Waits until a thread is paused.
    void waitUntilPaused();

    // Waits until a thread is paused, lets it through `count` pauses and waits until it is paused
    // in the next one. For one driver thread.
    void step(int count = 1);

    // Waits until `count` pauses have begun since the clock was made; false after ten seconds.
    bool waitForPauses(std::size_t count);

    // Ends the pauses under way; those that begin later wait again.
    void release();

    int started() const { return started_.load(); }
    int ended() const { return ended_.load(); }

    // The requests of the pauses begun so far (the first kKeptRequests of them).
    std::vector<timespec> requests() const;

    void threadStarting() override;
    void threadEnding() override;
    void pause(const timespec& request) override;
    void wakeAll() override;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<int> started_{0};
    std::atomic<int> ended_{0};
    int paused_ = 0;
    long long entered_ = 0;
    long long allowed_ = 0;
    std::array<timespec, kKeptRequests> requests_{};
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace testsupport
