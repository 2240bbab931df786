// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "HostRecords.h"
#include "PosixThread.h"
#include "SI_base.h"
#include "ServiceType.h"
#include "modules/INumberedPinModule.h"

// The driver object: serves the inputs and outputs of one Axioline F terminal module for its
// host. Its tables are filled in initialize() before its thread starts and are only read
// afterwards, which is why neither the scan thread nor event delivery takes a lock. The driver
// catches no exceptions: a number setting it cannot read and a failed service lookup of the
// platform are the host's to handle.
class CPLCNext : public CSI_base, private CPosixThread {
public:
    // The binding of one output pin to the event id that drives it.
    struct ServiceEvent {
        uint32_t nEventId = 0;
        ServiceType eType = Unsupported;
    };

    CPLCNext(stSP_Params_t params, std::map<unsigned, stMappingElem_t> mappings,
             std::map<unsigned, stServiceParams_t> services);

    // Does not end the driver thread: the host must have ended it before.
    ~CPLCNext() override;

    CPLCNext(const CPLCNext&) = delete;
    CPLCNext& operator=(const CPLCNext&) = delete;

    using CSI_base::onReceiveEvent;
    void onReceiveEvent(stEventParams_t event) override;

    void initialize() override;

    // The body of the driver thread: publishes every input once, then scans for ever.
    void run() override;

    void PrintVersionNumber();

    // Static: it depends on the text alone, so it can be used without a driver.
    static ServiceType getServiceType(const std::string& name);

protected:
    void initDigitalIn(const stServiceParams_t& service);
    void initAnalogIn(const stServiceParams_t& service);
    void initDigitalOut(const stServiceParams_t& service);
    void initAnalogOut(const stServiceParams_t& service);

    void onReceiveDigitalOut(int pin, stEventParams_t event);
    void onReceiveAnalogOut(int pin, stEventParams_t event);

    void restartDevice();

    INumberedPinModule* m_pModule;
    std::map<int, stEventParams_t> m_mapDigitalInputs;
    std::map<int, stEventParams_t> m_mapAnalogInputs;
    std::map<int, ServiceEvent> m_mapOutputs;
    std::list<unsigned> m_lstRestartEventIds;
    int m_nConsecutiveNumber;

private:
    // The texts with which a pin service is refused; they differ per service kind.
    struct PinRefusal {
        const char* szNotAvailableFormat;
        const char* szNotAvailable;
        const char* szInUseFormat;
        const char* szInUse;
    };

    // Checks that the pin exists for the kind and is still free; otherwise logs, stops the driver
    // and answers false.
    bool isPinFree(const stServiceParams_t& service, int nPin, ServiceType eType,
                   const PinRefusal& refusal);

    // The event published for a new input service, with a zeroed payload buffer of at least
    // nMinimumSize bytes.
    stEventParams_t newInputEvent(uint32_t nEventId, std::size_t nMinimumSize);

    static int parseNumber(const std::string& sText);
};

// The library's entry point for the host: a new driver made from copies of the records. The maps
// are read, never changed, and not kept.
extern "C" __attribute__((visibility("default"))) CSI_base* CreateSiObject(
    stSP_Params_t params, std::map<unsigned, stMappingElem_t>* mappings,
    std::map<unsigned, stServiceParams_t>* services);
