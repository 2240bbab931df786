// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// The scenario's events for the driver, against the services it has set up: data, a size the
// data has, an id that an output or restart service takes, and a digital output's byte 0 or 1.
// Call once every service is checked.
void checkEvents(DriverCheck& check);

}  // namespace axlsim::configcheck
