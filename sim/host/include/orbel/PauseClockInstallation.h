// SPDX-License-Identifier: MIT
#pragma once

#include "orbel/Installation.h"
#include "orbel/PauseClock.h"

namespace orbel {

// Keeps a pause clock installed while it lives; throws std::logic_error while another clock is
// installed (installPauseClock).
using PauseClockInstallation = Installation<PauseClock, installPauseClock, uninstallPauseClock>;

}  // namespace orbel
