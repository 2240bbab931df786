// SPDX-License-Identifier: MIT
#pragma once

#include "SI_base.h"
#include "Workload.h"
#include "hosting/DriverPtr.h"

namespace axlbench {

// A driver made by the library's factory and initialised as a host does it, configured with
// every pin of the module at position 1 (see Workload.h for its event ids). Its thread is ended
// before it is deleted, as a host must.
class BenchDriver {
public:
    explicit BenchDriver(ModuleKind module);

    // The driver as its host holds it.
    CSI_base& host() { return *driver_; }

private:
    hosting::DriverPtr<> driver_;
};

}  // namespace axlbench
