// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "HostRecords.h"

namespace hosting {

// The records a host hands to CreateSiObject, built in one expression:
//
//   auto config = DriverConfig::digital().digitalIn(10, "3").digitalOut(20, "5", "0");
//
// A pin service is keyed in the service table by its event id, unless a key is given, and gets a
// mapping element of its payload size.
class DriverConfig {
public:
    static constexpr const char* kDigitalModule = "AXL_F_DI8_1_DO8_1";
    static constexpr const char* kAnalogModule = "AXL_F_AI2_AO2";

    explicit DriverConfig(std::string deviceType, std::string consecutiveNumber = "1");

    static DriverConfig digital(int consecutiveNumber = 1);
    static DriverConfig analog(int consecutiveNumber = 1);

    DriverConfig& serviceName(std::string name);
    DriverConfig& param(std::string key, std::string value);
    DriverConfig& withoutParam(const std::string& key);

    DriverConfig& digitalIn(uint32_t eventId, std::string pin, uint16_t size = 1);
    DriverConfig& analogIn(uint32_t eventId, std::string pin, uint16_t size = 4);
    DriverConfig& digitalOut(uint32_t eventId, std::string pin, std::string initVal,
                             uint16_t size = 1);
    DriverConfig& analogOut(uint32_t eventId, std::string pin, std::string initVal,
                            uint16_t size = 4);
    DriverConfig& restart(uint32_t eventId);

    // Any service, under its own key, with the parameters given and no mapping element.
    DriverConfig& service(unsigned key, std::string serviceType, uint32_t eventId,
                          std::map<std::string, std::string> params = {});
    DriverConfig& mapping(uint32_t eventId, uint16_t size);

    stSP_Params_t params;
    std::map<unsigned, stMappingElem_t> mappings;
    std::map<unsigned, stServiceParams_t> services;
};

}  // namespace hosting
