// SPDX-License-Identifier: MIT
#include "ScanRig.h"

#include <vector>

#include "orbel/DriverThreads.h"

namespace axlbench {

namespace {

constexpr long kWarmUpScans = 100;

std::vector<FloorScanner::Read> readsOf(ModuleKind module, const FloorFrames& frames) {
    if (module == ModuleKind::Digital) {
        const std::size_t byte = frames.inputOffset("DI8");
        return std::vector<FloorScanner::Read>(8, {byte, 1});
    }
    const std::size_t word = frames.inputOffset("AI32");
    return {{word, 2}, {word + 2, 2}};
}

}  // namespace

ScanRig::ScanRig(ModuleKind module, Side side) : BenchRig(module) {
    if (module == ModuleKind::Digital) {
        station_.setDigitalInputs(1, 0xA5);
    } else {
        station_.setAnalogInput(1, 0, 12345);
        station_.setAnalogInput(1, 1, 23456);
    }
    if (side == Side::Driver) {
        startDriver(module);
    } else {
        frames_ = std::make_unique<FloorFrames>();
        floor_ = std::make_unique<FloorScanner>(frames_->in(), readsOf(module, *frames_));
        floor_->start();
    }
    clock_.waitUntilHeld();
    run(kWarmUpScans);
}

ScanRig::~ScanRig() {
    orbel::endAllDriverThreads();
}

std::chrono::nanoseconds ScanRig::run(long scans) {
    return clock_.run(scans);
}

}  // namespace axlbench
