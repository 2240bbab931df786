// SPDX-License-Identifier: MIT
#pragma once

#include <list>
#include <map>

#include "PLCNext.h"
#include "hosting/DriverConfig.h"

namespace testsupport {

// A driver whose settings and tables a test can look at. Made directly, not through the factory
// (the constructor is the same), so that a test can also hand it a module of its own before
// initialize().
class ExposedDriver : public CPLCNext {
public:
    explicit ExposedDriver(const hosting::DriverConfig& config)
        : CPLCNext(config.params, config.mappings, config.services) {}

    int consecutiveNumber() const { return m_nConsecutiveNumber; }
    INumberedPinModule* module() const { return m_pModule; }
    void setModule(INumberedPinModule* module) { m_pModule = module; }
    bool stopped() const { return m_bStopped; }

    const std::map<int, stEventParams_t>& digitalInputs() const { return m_mapDigitalInputs; }
    const std::map<int, stEventParams_t>& analogInputs() const { return m_mapAnalogInputs; }
    const std::map<int, ServiceEvent>& outputs() const { return m_mapOutputs; }
    const std::list<unsigned>& restartEventIds() const { return m_lstRestartEventIds; }

    const std::map<unsigned, stMappingElem_t>& hostMappings() const { return m_mapMappings; }
    const std::map<unsigned, stServiceParams_t>& hostServices() const { return m_mapServices; }
    const stSP_Params_t& hostParams() const { return m_spParams; }
};

}  // namespace testsupport
