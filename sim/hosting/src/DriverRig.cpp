// SPDX-License-Identifier: MIT
#include "hosting/DriverRig.h"

#include <chrono>
#include <utility>

#include "hosting/FloatBytes.h"
#include "hosting/HostCalls.h"
#include "vplc/Runtime.h"

namespace hosting {

namespace {

// Longer than the longest pause of a scan, so that a released thread always comes back to the
// scan gate within it.
constexpr std::chrono::milliseconds kScanSpan{200};

}  // namespace

namespace {

vplc::Station stationOf(const std::vector<vplc::Module>& bus) {
    vplc::Station::Builder builder = vplc::Station::builder();
    for (vplc::Module module : bus) {
        builder.module(module);
    }
    return builder.build();
}

}  // namespace

DriverRig::DriverRig() : DriverRig({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2}) {}

DriverRig::DriverRig(const std::vector<vplc::Module>& bus) : station_(stationOf(bus)) {
    vplc::Runtime::reset();
}

DriverRig::~DriverRig() {
    destroy();
    vplc::Runtime::reset();
}

CSI_base& DriverRig::create(const DriverConfig& records, DriverFactory factory) {
    driver_ = host::create(records, factory);
    return *driver_;
}

CSI_base& DriverRig::create(DriverConfig& records, DriverFactory factory) {
    driver_ = host::create(records, factory);
    return *driver_;
}

CSI_base& DriverRig::adopt(const std::function<CSI_base*()>& construct) {
    driver_ = host::adopt(construct);
    return *driver_;
}

void DriverRig::initialize() {
    clock_.holdScans(true);
    host::initialize(*driver_);
    clock_.settle();
}

void DriverRig::passGate() {
    clock_.releaseScan();
    clock_.runFor(kScanSpan);
}

void DriverRig::deliver(uint32_t id, std::vector<uint8_t> payload, uint32_t size) {
    host::deliver(*driver_, id, payload, size);
}

void DriverRig::deliver(uint32_t id, std::vector<uint8_t> payload) {
    host::deliver(*driver_, id, std::move(payload));
}

void DriverRig::deliverFloat(uint32_t id, float value) {
    host::deliver(*driver_, id, floatBytes(value));
}

void DriverRig::deliverNull(uint32_t id) {
    host::deliverNull(*driver_, id, 1);
}

void DriverRig::destroy() {
    host::destroy(driver_);
}

bool DriverRig::threadStarted() const {
    return !recorder_.threadStarts().empty();
}

}  // namespace hosting
