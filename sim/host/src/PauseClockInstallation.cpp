// SPDX-License-Identifier: MIT
#include "orbel/PauseClockInstallation.h"

#include <stdexcept>

namespace orbel {

PauseClockInstallation::PauseClockInstallation(PauseClock& clock) {
    if (pauseClock() != nullptr) {
        throw std::logic_error("A pause clock is already installed");
    }
    setPauseClock(&clock);
}

PauseClockInstallation::~PauseClockInstallation() {
    setPauseClock(nullptr);
}

}  // namespace orbel
