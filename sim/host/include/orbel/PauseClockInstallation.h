// SPDX-License-Identifier: MIT
#pragma once

#include "orbel/PauseClock.h"

namespace orbel {

// Keeps a pause clock installed while it lives. A clock that installs itself holds one as its last
// member: it is then installed only once the rest of it is made, and taken out before any of the
// rest is taken apart.
class PauseClockInstallation {
public:
    // Throws std::logic_error while another clock is installed: two hosts controlling time at
    // once would each miss the other's threads.
    explicit PauseClockInstallation(PauseClock& clock);
    ~PauseClockInstallation();
    PauseClockInstallation(const PauseClockInstallation&) = delete;
    PauseClockInstallation& operator=(const PauseClockInstallation&) = delete;
};

}  // namespace orbel
