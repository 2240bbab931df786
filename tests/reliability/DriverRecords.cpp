#include "DriverRecords.h"

#include <utility>

#include "RecordComparison.h"

namespace reliability {

DriverRecords::DriverRecords(std::string deviceType, std::string consecutiveNumber) {
    params.sName = "driver";
    params.sServiceName = "IO1";
    params.sDeviceType = std::move(deviceType);
    params.mapParams["Consecutive Number"] = std::move(consecutiveNumber);
}

DriverRecords DriverRecords::digital(int position) {
    return DriverRecords(kDigitalModule, std::to_string(position));
}

DriverRecords DriverRecords::analog(int position) {
    return DriverRecords(kAnalogModule, std::to_string(position));
}

DriverRecords& DriverRecords::param(std::string key, std::string value) {
    params.mapParams[std::move(key)] = std::move(value);
    return *this;
}

DriverRecords& DriverRecords::withoutParam(const std::string& key) {
    params.mapParams.erase(key);
    return *this;
}

DriverRecords& DriverRecords::digitalIn(uint32_t eventId, std::string pin, uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "DigitalIn", eventId, {{"PinNum", std::move(pin)}});
}

DriverRecords& DriverRecords::analogIn(uint32_t eventId, std::string pin, uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "AnalogIn", eventId, {{"PinNum", std::move(pin)}});
}

DriverRecords& DriverRecords::digitalOut(uint32_t eventId, std::string pin, std::string initVal,
                                         uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "DigitalOut", eventId,
                   {{"PinNum", std::move(pin)}, {"InitVal", std::move(initVal)}});
}

DriverRecords& DriverRecords::analogOut(uint32_t eventId, std::string pin, std::string initVal,
                                        uint16_t size) {
    mapping(eventId, size);
    return service(eventId, "AnalogOut", eventId,
                   {{"PinNum", std::move(pin)}, {"InitVal", std::move(initVal)}});
}

DriverRecords& DriverRecords::restart(uint32_t eventId) {
    return service(eventId, "RestartDevice", eventId);
}

DriverRecords& DriverRecords::service(unsigned key, std::string serviceType, uint32_t eventId,
                                      std::map<std::string, std::string> serviceParams) {
    stServiceParams_t record;
    record.nEventId = eventId;
    record.sName = "service" + std::to_string(key);
    record.sServiceType = std::move(serviceType);
    record.mapParams = std::move(serviceParams);
    services[key] = std::move(record);
    return *this;
}

DriverRecords& DriverRecords::mapping(uint32_t eventId, uint16_t size) {
    stMappingElem_t element;
    element.nDataSize = size;
    mappings[eventId] = std::move(element);
    return *this;
}

bool DriverRecords::sameAs(const stSP_Params_t& otherParams,
                           const std::map<unsigned, stMappingElem_t>& otherMappings,
                           const std::map<unsigned, stServiceParams_t>& otherServices) const {
    return fuzz::sameRecords(params, otherParams) && fuzz::sameRecords(mappings, otherMappings) &&
           fuzz::sameRecords(services, otherServices);
}

}  // namespace reliability
