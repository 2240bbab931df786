#pragma once

#include "SI_base.h"
#include "Workload.h"

namespace axlbench {

// A driver made by the library's factory and initialised as a host does it, configured with
// every pin of the module at position 1 (see Workload.h for its event ids). The destructor ends
// its thread and deletes it, as a host must.
class BenchDriver {
public:
    explicit BenchDriver(ModuleKind module);
    ~BenchDriver();
    BenchDriver(const BenchDriver&) = delete;
    BenchDriver& operator=(const BenchDriver&) = delete;

    // The driver as its host holds it.
    CSI_base& host() { return *driver_; }

private:
    CSI_base* driver_;
};

}  // namespace axlbench
