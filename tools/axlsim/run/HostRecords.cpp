// SPDX-License-Identifier: MIT
#include "axlsim/run/HostRecords.h"

namespace axlsim {

hosting::DriverConfig hostRecordsOf(const Config::Driver& config) {
    hosting::DriverConfig records(config.deviceType);
    records.params.sName = config.name;
    records.params.sServiceName = config.serviceName;
    records.params.mapParams = config.params;
    for (const auto& [id, size] : config.mappings) {
        records.mapping(id, size);
    }
    for (const auto& [key, service] : config.services) {
        stServiceParams_t& record = records.services[key];
        record.nEventId = service.eventId;
        record.sName = service.name;
        record.sServiceType = service.type;
        record.mapParams = service.params;
    }
    return records;
}

}  // namespace axlsim
