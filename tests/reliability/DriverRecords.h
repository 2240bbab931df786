#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "HostRecords.h"

namespace reliability {

// The records a host hands to CreateSiObject, built in one expression:
//
//   auto records = DriverRecords::digital(1).digitalIn(10, "3").digitalOut(20, "5", "1");
//
// A service made by one of the kind methods is keyed by its event id and gets a mapping element
// of its payload size.
class DriverRecords {
public:
    static constexpr const char* kDigitalModule = "AXL_F_DI8_1_DO8_1";
    static constexpr const char* kAnalogModule = "AXL_F_AI2_AO2";

    DriverRecords(std::string deviceType, std::string consecutiveNumber);

    static DriverRecords digital(int position);
    static DriverRecords analog(int position);

    DriverRecords& param(std::string key, std::string value);
    DriverRecords& withoutParam(const std::string& key);

    DriverRecords& digitalIn(uint32_t eventId, std::string pin, uint16_t size = 1);
    DriverRecords& analogIn(uint32_t eventId, std::string pin, uint16_t size = 4);
    DriverRecords& digitalOut(uint32_t eventId, std::string pin, std::string initVal,
                              uint16_t size = 1);
    DriverRecords& analogOut(uint32_t eventId, std::string pin, std::string initVal,
                             uint16_t size = 4);
    DriverRecords& restart(uint32_t eventId);

    // Any service under its own key, with the parameters given and no mapping element.
    DriverRecords& service(unsigned key, std::string serviceType, uint32_t eventId,
                           std::map<std::string, std::string> serviceParams = {});
    DriverRecords& mapping(uint32_t eventId, uint16_t size);

    // True when the given records hold exactly these records, field by field.
    bool sameAs(const stSP_Params_t& otherParams,
                const std::map<unsigned, stMappingElem_t>& otherMappings,
                const std::map<unsigned, stServiceParams_t>& otherServices) const;

    stSP_Params_t params;
    std::map<unsigned, stMappingElem_t> mappings;
    std::map<unsigned, stServiceParams_t> services;
};

}  // namespace reliability
