// SPDX-License-Identifier: MIT
#include "hosting/DriverPtr.h"

#include "orbel/DriverThreads.h"

namespace hosting {

void DriverDestroyer::operator()(CSI_base* driver) const {
    orbel::destroyDriver(driver);
}

}  // namespace hosting
