// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>

#include "FloorFrames.h"
#include "FloorScanner.h"
#include "ScanBatchClock.h"
#include "SilentHost.h"
#include "Workload.h"
#include "hosting/DriverPtr.h"
#include "vplc/Station.h"

namespace axlbench {

// Steady scans of one module on the virtual controller, by the driver's own thread or by the
// floor's. The inputs hold still, so a driver scan reads every pin and publishes nothing. Once
// made, the scanning thread is held between batches; setting up and the first scans are not
// measured.
class ScanRig {
public:
    ScanRig(ModuleKind module, Side side);
    ~ScanRig();
    ScanRig(const ScanRig&) = delete;
    ScanRig& operator=(const ScanRig&) = delete;

    // Runs `scans` scans back to back; returns their time on the scanning thread.
    std::chrono::nanoseconds run(long scans);

    // Events the driver has published so far (its initial publications, then none while the
    // inputs hold still).
    int publications() const { return host_.publications(); }

private:
    SilentHost host_;
    vplc::Station station_;
    ScanBatchClock clock_;
    std::unique_ptr<FloorFrames> frames_;
    std::unique_ptr<FloorScanner> floor_;
    // Configured with every pin of the module at position 1 (see Workload.h for its event ids).
    hosting::DriverPtr<> driver_;
};

}  // namespace axlbench
