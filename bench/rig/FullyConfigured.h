// SPDX-License-Identifier: MIT
#pragma once

#include "Workload.h"
#include "hosting/DriverConfig.h"

namespace axlbench {

// The records of a driver that configures every pin of its module: every input and every
// output pin, outputs starting at 0 (see Workload.h for the event ids). `position` is the
// module's place on the bus, its "Consecutive Number".
hosting::DriverConfig fullyConfigured(ModuleKind module, int position = 1);

}  // namespace axlbench
