// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// One service as the driver's initialisation sets it up: a "type" the driver and its module
// serve, the keys and numbers it reads, its mapping, its pin and an output's initial value.
// Call in the order of the service keys, as the driver meets them.
void checkService(DriverCheck& check, unsigned key, const Config::Service& service);

// Once every service is checked: a restart service's event id that an output service has as
// well, which the driver takes as the output's.
void checkRestartIds(DriverCheck& check);

}  // namespace axlsim::configcheck
