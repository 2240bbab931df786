#pragma once

#include <map>

#include "DriverConfig.h"
#include "PLCNext.h"

namespace reliability {

using testsupport::DriverConfig;

// A driver whose settings and tables a test can look at. Made directly rather than through the
// factory; the constructor is the same.
class ExposedDriver : public CPLCNext {
public:
    explicit ExposedDriver(const DriverConfig& records)
        : CPLCNext(records.params, records.mappings, records.services) {}

    int consecutiveNumber() const { return m_nConsecutiveNumber; }
    const std::map<int, stEventParams_t>& digitalInputs() const { return m_mapDigitalInputs; }
    const std::map<int, stEventParams_t>& analogInputs() const { return m_mapAnalogInputs; }
    const std::map<int, ServiceEvent>& outputs() const { return m_mapOutputs; }
    const std::map<unsigned, stServiceParams_t>& hostServices() const { return m_mapServices; }
    const std::map<unsigned, stMappingElem_t>& hostMappings() const { return m_mapMappings; }
    const stSP_Params_t& hostParams() const { return m_spParams; }
};

}  // namespace reliability
