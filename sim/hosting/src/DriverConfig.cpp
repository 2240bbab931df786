// SPDX-License-Identifier: MIT
#include "hosting/DriverConfig.h"

#include <utility>

namespace hosting {

DriverConfig::DriverConfig(std::string deviceType, std::string consecutiveNumber) {
    params.sName = "driver";
    params.sServiceName = "IO1";
    params.sDeviceType = std::move(deviceType);
    params.mapParams["Consecutive Number"] = std::move(consecutiveNumber);
}

DriverConfig DriverConfig::digital(int consecutiveNumber) {
    return DriverConfig(kDigitalModule, std::to_string(consecutiveNumber));
}

DriverConfig DriverConfig::analog(int consecutiveNumber) {
    return DriverConfig(kAnalogModule, std::to_string(consecutiveNumber));
}

DriverConfig& DriverConfig::serviceName(std::string name) {
    params.sServiceName = std::move(name);
    return *this;
}

DriverConfig& DriverConfig::param(std::string key, std::string value) {
    params.mapParams[std::move(key)] = std::move(value);
    return *this;
}

DriverConfig& DriverConfig::withoutParam(const std::string& key) {
    params.mapParams.erase(key);
    return *this;
}

DriverConfig& DriverConfig::digitalIn(uint32_t eventId, std::string pin, uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "DigitalIn", eventId, {{"PinNum", std::move(pin)}});
}

DriverConfig& DriverConfig::analogIn(uint32_t eventId, std::string pin, uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "AnalogIn", eventId, {{"PinNum", std::move(pin)}});
}

DriverConfig& DriverConfig::digitalOut(uint32_t eventId, std::string pin, std::string initVal,
                                       uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "DigitalOut", eventId,
                   {{"PinNum", std::move(pin)}, {"InitVal", std::move(initVal)}});
}

DriverConfig& DriverConfig::analogOut(uint32_t eventId, std::string pin, std::string initVal,
                                      uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "AnalogOut", eventId,
                   {{"PinNum", std::move(pin)}, {"InitVal", std::move(initVal)}});
}

DriverConfig& DriverConfig::restart(uint32_t eventId) {
    return service(eventId, "RestartDevice", eventId);
}

DriverConfig& DriverConfig::service(unsigned key, std::string serviceType, uint32_t eventId,
                                    std::map<std::string, std::string> serviceParams) {
    stServiceParams_t record;
    record.nEventId = eventId;
    record.sName = "service" + std::to_string(key);
    record.sServiceType = std::move(serviceType);
    record.mapParams = std::move(serviceParams);
    services[key] = std::move(record);
    return *this;
}

DriverConfig& DriverConfig::mapping(uint32_t eventId, uint16_t size) {
    stMappingElem_t element;
    element.nDataSize = size;
    mappings[eventId] = std::move(element);
    return *this;
}

}  // namespace hosting
