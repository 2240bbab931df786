// SPDX-License-Identifier: MIT
#pragma once

namespace orbel {

// Whether CSI_base::stopWithError sets the driver's m_bStopped. It does by default, as the host
// does; a host that only reports the stop and leaves the flag alone is possible too, and a test
// switches this off to see what a driver does then. Set it while no driver is being initialised.
void setStopSetsStopFlag(bool sets);
bool stopSetsStopFlag();

}  // namespace orbel
