// SPDX-License-Identifier: MIT
// Answers the controller's hooks from the host and the installed clock, from the moment this
// library is loaded: every program that links it gets the scan gate and the driver-thread count
// without a step of its own, as it did while the controller asked the host itself.
#include "orbel/DriverThreads.h"
#include "orbel/PauseClock.h"
#include "vplc/HostHooks.h"
#include "vplc/VirtualClock.h"

namespace vplc {

namespace {

// A virtual clock installed as the host's pause clock holds driver threads at its gate; any other
// pause clock, or none, lets every scan start at once.
void atScanStart() {
    if (auto* clock = dynamic_cast<VirtualClock*>(orbel::pauseClock())) {
        clock->atScanStart();
    }
}

// The hooks stay installed until the process ends: driver threads may still scan while the
// program's statics are destroyed, and the library is linked, never unloaded before then.
[[maybe_unused]] const bool installed = [] {
    setScanStartHook(&atScanStart);
    setRunningDriverThreadsHook(&orbel::runningDriverThreads);
    return true;
}();

}  // namespace

}  // namespace vplc
