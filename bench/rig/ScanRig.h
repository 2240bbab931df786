// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>

#include "BenchRig.h"
#include "FloorScanner.h"
#include "Workload.h"

namespace axlbench {

// Steady scans of one module on the virtual controller, by the driver's own thread or by the
// floor's. The inputs hold still, so a driver scan reads every pin and publishes nothing. Once
// made, the scanning thread is held between batches; setting up and the first scans are not
// measured.
class ScanRig : public BenchRig {
public:
    ScanRig(ModuleKind module, Side side);
    // Ends the floor's thread too, before the floor goes.
    ~ScanRig();

    // Runs `scans` scans back to back; returns their time on the scanning thread.
    std::chrono::nanoseconds run(long scans);

    // Events the driver has published so far (its initial publications, then none while the
    // inputs hold still).
    int publications() const { return host_.publications(); }

private:
    std::unique_ptr<FloorScanner> floor_;
};

}  // namespace axlbench
