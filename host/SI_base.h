// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

#include "EventClient.h"
#include "HostExport.h"
#include "HostRecords.h"

// The host's base class of every driver object. Virtual slots, in order: destructor,
// receiveEvent, onReceiveEvent(unsigned, bool), onReceiveEvent(stEventParams_t),
// convertMemToTag, convertTagToMem, initialize, deInitialise, run.
class ORBEL_API CSI_base : public CEventClient {
public:
    CSI_base(stSP_Params_t spParams, std::map<unsigned, stMappingElem_t> mapMappings,
             std::map<unsigned, stServiceParams_t> mapServices);
    ~CSI_base() override;

    // Hands the event to onReceiveEvent(stEventParams_t).
    void receiveEvent(const stEventParams_t& event) override;

    using CEventClient::onReceiveEvent;
    virtual void onReceiveEvent(stEventParams_t event) = 0;

    virtual void convertMemToTag(stEventParams_t& event, const stAppBlocInfo_t& info);
    virtual void convertTagToMem(stEventParams_t& event, const stAppBlocInfo_t& info, bool bFlag,
                                 const std::string& sText);

    virtual void initialize() = 0;
    virtual void deInitialise();
    virtual void run() = 0;

    // Hands the event to the host's consumers; the payload is copied before this returns.
    void publishEvent(const stEventParams_t& event);

    // Reports that one service cannot run, and marks the driver stopped.
    void stopWithError(const stServiceParams_t& service, const std::string& sMessage);

    // Reports a driver-wide error, and marks the driver stopped.
    void stopWithError(const std::string& sMessage);

protected:
    std::map<unsigned, stMappingElem_t> m_mapMappings;
    std::map<unsigned, stServiceParams_t> m_mapServices;
    stSP_Params_t m_spParams;
    bool m_bStopped;
};
