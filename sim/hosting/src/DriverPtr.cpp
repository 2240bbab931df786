// SPDX-License-Identifier: MIT
#include "hosting/DriverPtr.h"

#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"

namespace hosting {

void DriverDestroyer::operator()(CSI_base* driver) const {
    // Whatever is logged while the thread ends and the driver goes is the driver's.
    orbel::CallScope scope(driver);
    orbel::destroyDriver(driver);
}

}  // namespace hosting
