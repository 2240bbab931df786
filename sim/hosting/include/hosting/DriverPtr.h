// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "SI_base.h"

namespace hosting {

// Ends a driver's thread before deleting the driver, under the driver's call scope, as a host
// must.
struct DriverDestroyer {
    void operator()(CSI_base* driver) const;
};

// A driver owned the way a host owns one.
template <class Driver = CSI_base>
using DriverPtr = std::unique_ptr<Driver, DriverDestroyer>;

}  // namespace hosting
