// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceType.h"
#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// A service's event id against the driver's mappings: there, and of the size its payload takes
// (one byte, or four for a float).
void checkMapping(DriverCheck& check, unsigned key, const Config::Service& service,
                  ServiceType kind);

}  // namespace axlsim::configcheck
