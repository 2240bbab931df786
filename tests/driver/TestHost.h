// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <initializer_list>

#include "HostRecords.h"
#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"

namespace drivertest {

using hosting::DriverConfig;
using hosting::DriverPtr;

// What a host does with a driver, with the driver's log lines attributed to it.
class TestHost {
public:
    // Through the exported factory.
    static DriverPtr<> create(const DriverConfig& config);
    static void initialize(CSI_base& driver);
    // Through the base's receiveEvent, as the host delivers events.
    static void deliver(CSI_base& driver, const stEventParams_t& event);

    // An event with the given id whose payload is `bytes`.
    static void deliverBytes(CSI_base& driver, uint32_t id, std::initializer_list<uint8_t> bytes);
    static void deliverFloat(CSI_base& driver, uint32_t id, float value);
};

}  // namespace drivertest
