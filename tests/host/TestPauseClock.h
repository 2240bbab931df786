// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <vector>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

namespace hosttest {

// A pause clock whose pauses last until the test releases them or the thread's end is requested.
// Installed for its lifetime.
class TestPauseClock final : public orbel::PauseClock {
public:
    void threadStarting() override;
    void threadEnding() override;
    void pause(const timespec& request) override;
    void wakeAll() override;

    // Waits until `count` pauses have begun since the clock was made; false on timeout.
    bool waitForPauses(std::size_t count);

    // Ends the pauses under way.
    void release();

    int started() const { return started_.load(); }
    int ended() const { return ended_.load(); }
    std::vector<timespec> requests() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<int> started_{0};
    std::atomic<int> ended_{0};
    uint64_t releases_ = 0;
    std::vector<timespec> requests_;
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace hosttest
