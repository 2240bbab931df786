// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <ctime>
#include <mutex>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

namespace drivertest {

// A pause clock for one driver thread that lets the test walk it from pause to pause. Unlike
// vplc::VirtualClock it keeps no records, so the driver thread allocates nothing in it: tests
// that count allocations on that thread use it. Installed while it lives.
class StepClock final : public orbel::PauseClock {
public:
    // Waits until the driver thread is paused.
    void waitUntilPaused();

    // Waits until the driver thread is paused, lets it through `count` pauses and waits until it
    // is paused in the next one.
    void step(int count = 1);

    void threadStarting() override;
    void threadEnding() override;
    void pause(const timespec& request) override;
    void wakeAll() override;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool paused_ = false;
    long long entered_ = 0;
    long long allowed_ = 0;
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace drivertest
