// SPDX-License-Identifier: MIT
#include "TestHost.h"

#include <cstring>
#include <vector>

#include "PLCNext.h"
#include "orbel/CallScope.h"

namespace drivertest {

DriverPtr<> TestHost::create(const DriverConfig& config) {
    auto mappings = config.mappings;
    auto services = config.services;
    orbel::CallScope creation(nullptr);
    return DriverPtr<>(CreateSiObject(config.params, &mappings, &services));
}

void TestHost::initialize(CSI_base& driver) {
    orbel::CallScope scope(&driver);
    driver.initialize();
}

void TestHost::deliver(CSI_base& driver, const stEventParams_t& event) {
    driver.receiveEvent(event);
}

void TestHost::deliverBytes(CSI_base& driver, uint32_t id, std::initializer_list<uint8_t> bytes) {
    std::vector<uint8_t> payload(bytes);
    stEventParams_t event;
    event.pData = payload.data();
    event.nId = id;
    event.nSize = static_cast<uint32_t>(payload.size());
    deliver(driver, event);
}

void TestHost::deliverFloat(CSI_base& driver, uint32_t id, float value) {
    uint8_t payload[sizeof value];
    std::memcpy(payload, &value, sizeof value);
    stEventParams_t event;
    event.pData = payload;
    event.nId = id;
    event.nSize = sizeof value;
    deliver(driver, event);
}

}  // namespace drivertest
