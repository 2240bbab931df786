// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "FloorFrames.h"
#include "ScanBatchClock.h"
#include "SilentHost.h"
#include "Workload.h"
#include "hosting/DriverPtr.h"
#include "vplc/Station.h"

namespace axlbench {

// What the scan and event rigs share: a silent host, the virtual controller with one module at
// position 1, the clock that holds the scanning thread between batches, and the side measured:
// the driver, or the floor's own frame handles. Every driver thread is ended when it goes.
class BenchRig {
public:
    BenchRig(const BenchRig&) = delete;
    BenchRig& operator=(const BenchRig&) = delete;

protected:
    explicit BenchRig(ModuleKind module);
    ~BenchRig();

    // Creates and initialises the driver; throws std::runtime_error unless it started as
    // configured.
    void startDriver(ModuleKind module);

    SilentHost host_;
    vplc::Station station_;
    ScanBatchClock clock_;
    std::unique_ptr<FloorFrames> frames_;
    // Configured with every pin of the module at position 1 (see Workload.h for its event ids).
    hosting::DriverPtr<> driver_;
};

}  // namespace axlbench
