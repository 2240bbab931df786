// SPDX-License-Identifier: MIT
#include "hosting/DriverRig.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "PLCNext.h"
#include "orbel/CallScope.h"
#include "vplc/Runtime.h"

namespace hosting {

namespace {

// Longer than the longest pause of a scan, so that a released thread always comes back to the
// scan gate within it.
constexpr std::chrono::milliseconds kScanSpan{200};

constexpr std::size_t kMinimumPayload = 4;

}  // namespace

DriverRig::DriverRig() : plant_(vplc::Plant::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2})) {
    vplc::Runtime::reset();
}

DriverRig::~DriverRig() {
    destroy();
    vplc::Runtime::reset();
}

CSI_base& DriverRig::create(const DriverConfig& records) {
    return adopt([&records] {
        auto mappings = records.mappings;
        auto services = records.services;
        return CreateSiObject(records.params, &mappings, &services);
    });
}

CSI_base& DriverRig::adopt(const std::function<CSI_base*()>& construct) {
    orbel::CallScope creation(nullptr);
    driver_.reset(construct());
    return *driver_;
}

void DriverRig::initialize() {
    clock_.holdScans(true);
    orbel::CallScope scope(driver_.get());
    driver_->initialize();
    clock_.settle();
}

void DriverRig::passGate() {
    clock_.releaseScan();
    clock_.runFor(kScanSpan);
}

void DriverRig::deliver(uint32_t id, std::vector<uint8_t> payload, uint32_t size) {
    payload.resize(std::max(payload.size(), kMinimumPayload));
    stEventParams_t event;
    event.pData = payload.data();
    event.nId = id;
    event.nSize = size;
    driver_->receiveEvent(event);
}

void DriverRig::deliver(uint32_t id, std::vector<uint8_t> payload) {
    const auto size = static_cast<uint32_t>(payload.size());
    deliver(id, std::move(payload), size);
}

void DriverRig::deliverFloat(uint32_t id, float value) {
    std::vector<uint8_t> payload(sizeof value);
    std::memcpy(payload.data(), &value, sizeof value);
    deliver(id, std::move(payload));
}

void DriverRig::deliverNull(uint32_t id) {
    stEventParams_t event;
    event.nId = id;
    event.nSize = 1;
    driver_->receiveEvent(event);
}

void DriverRig::destroy() {
    driver_.reset();
}

bool DriverRig::threadStarted() const {
    return !recorder_.threadStarts().empty();
}

}  // namespace hosting
