// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// The driver's creation: the keys it is given and its "Consecutive Number", the position of its
// module on the bus.
void checkCreation(DriverCheck& check);

// The driver's module: a "deviceType" the driver knows, at the position it is given on the bus,
// and no other driver of the same module there.
void checkModule(DriverCheck& check);

}  // namespace axlsim::configcheck
