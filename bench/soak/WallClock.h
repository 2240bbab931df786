// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <map>
#include <mutex>
#include <vector>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

class CSI_base;

namespace soak {

// Driver pauses in real time, as without a pause clock, but each one is recorded with the wall
// time it began and ended, so that the soak knows when every scan ran. Installed while it lives.
class WallClock final : public orbel::PauseClock {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Pause {
        std::chrono::nanoseconds requested;
        Time began;
        Time ended;
    };

    // Every finished pause of the driver's thread, in order.
    std::vector<Pause> pausesOf(const CSI_base* driver) const;

    void threadStarting() override {}
    void threadEnding() override {}
    void pause(const timespec& request) override;
    void wakeAll() override;

private:
    mutable std::mutex mutex_;
    std::condition_variable woken_;
    std::map<const CSI_base*, std::vector<Pause>> pauses_;
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace soak
