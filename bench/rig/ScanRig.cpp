// SPDX-License-Identifier: MIT
#include "ScanRig.h"

#include <stdexcept>
#include <vector>

#include "FullyConfigured.h"
#include "hosting/HostCalls.h"
#include "orbel/DriverThreads.h"

namespace axlbench {

namespace {

constexpr long kWarmUpScans = 100;

vplc::Station stationWithInputs(ModuleKind module) {
    if (module == ModuleKind::Digital) {
        auto station = vplc::Station::of({vplc::Module::DI8_DO8});
        station.setDigitalInputs(1, 0xA5);
        return station;
    }
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setAnalogInput(1, 0, 12345);
    station.setAnalogInput(1, 1, 23456);
    return station;
}

std::vector<FloorScanner::Read> readsOf(ModuleKind module, const FloorFrames& frames) {
    if (module == ModuleKind::Digital) {
        const std::size_t byte = frames.inputOffset("DI8");
        return std::vector<FloorScanner::Read>(8, {byte, 1});
    }
    const std::size_t word = frames.inputOffset("AI32");
    return {{word, 2}, {word + 2, 2}};
}

}  // namespace

ScanRig::ScanRig(ModuleKind module, Side side) : station_(stationWithInputs(module)) {
    if (side == Side::Driver) {
        driver_ = hosting::host::create(fullyConfigured(module));
        hosting::host::initialize(*driver_);
        if (host_.stops() != 0 || host_.failures() != 0) {
            throw std::runtime_error("the driver did not start as configured");
        }
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
