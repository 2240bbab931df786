// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceType.h"
#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// A service's pin as the driver's module claims it: one the module has, not yet used by another
// service of the same kind. True when the driver takes it; else the stop it makes is a finding.
// Call only for a driver whose module is known.
bool claimPin(DriverCheck& check, unsigned key, const Config::Service& service, ServiceType kind,
              int pin);

}  // namespace axlsim::configcheck
