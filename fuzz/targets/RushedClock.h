// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

#include "orbel/PauseClock.h"

namespace fuzz {

// A pause clock on which every pause of a driver thread is over at once: scans follow each other
// as fast as the machine runs them, so that they meet the host's events as often as possible.
// Installed while it lives.
class RushedClock final : public orbel::PauseClock {
public:
    RushedClock();
    ~RushedClock() override;
    RushedClock(const RushedClock&) = delete;
    RushedClock& operator=(const RushedClock&) = delete;

    void threadStarting() override {}
    void threadEnding() override {}
    void pause(const timespec& request) override;
    void wakeAll() override {}
};

}  // namespace fuzz
