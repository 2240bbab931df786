// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

namespace fuzz {

// A pause clock on which every pause of a driver thread is over at once: scans follow each other
// as fast as the machine runs them, so that they meet the host's events as often as possible.
// Installed while it lives.
class RushedClock final : public orbel::PauseClock {
public:
    void threadStarting() override {}
    void threadEnding() override {}
    void pause(const timespec& request) override;
    void wakeAll() override {}

private:
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace fuzz
