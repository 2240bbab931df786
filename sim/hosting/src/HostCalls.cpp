// SPDX-License-Identifier: MIT
#include "hosting/HostCalls.h"

#include <algorithm>
#include <array>
#include <utility>

namespace hosting::host {

namespace {

DriverPtr<> createFrom(const stSP_Params_t& params, std::map<unsigned, stMappingElem_t>& mappings,
                       std::map<unsigned, stServiceParams_t>& services, DriverFactory factory) {
    orbel::CallScope creation(nullptr);
    return DriverPtr<>(factory(params, &mappings, &services));
}

void deliverEvent(CSI_base& driver, uint32_t id, uint8_t* data, uint32_t size) {
    stEventParams_t event;
    event.pData = data;
    event.nId = id;
    event.nSize = size;
    // receiveEvent puts the driver's own call scope around its handling.
    driver.receiveEvent(event);
}

}  // namespace

DriverPtr<> create(const DriverConfig& records, DriverFactory factory) {
    auto mappings = records.mappings;
    auto services = records.services;
    return createFrom(records.params, mappings, services, factory);
}

DriverPtr<> create(DriverConfig& records, DriverFactory factory) {
    return createFrom(records.params, records.mappings, records.services, factory);
}

void initialize(CSI_base& driver) {
    orbel::CallScope scope(&driver);
    driver.initialize();
}

void deliver(CSI_base& driver, uint32_t id, std::span<uint8_t> payload, uint32_t size) {
    if (payload.size() >= kLeastPayload) {
        deliverEvent(driver, id, payload.data(), size);
        return;
    }
    // A short payload is copied into a buffer of the least size; no allocation, so that hosts
    // that count allocations or time events see only the driver's.
    std::array<uint8_t, kLeastPayload> least{};
    std::copy(payload.begin(), payload.end(), least.begin());
    deliverEvent(driver, id, least.data(), size);
}

void deliver(CSI_base& driver, uint32_t id, std::vector<uint8_t> payload) {
    const auto size = static_cast<uint32_t>(payload.size());
    deliver(driver, id, std::span<uint8_t>(payload), size);
}

void deliverNull(CSI_base& driver, uint32_t id, uint32_t size) {
    deliverEvent(driver, id, nullptr, size);
}

}  // namespace hosting::host
