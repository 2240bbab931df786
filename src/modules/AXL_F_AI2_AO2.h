// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "gds/IOFrameBuffer.h"
#include "modules/INumberedPinModule.h"

// AXL F AI2 AO2: two analog inputs (consecutive words from port "AI32") and two analog outputs
// (consecutive words from port "AQ32"), each a big-endian IB IL word.
class AXL_F_AI2_AO2 : public INumberedPinModule {
public:
    explicit AXL_F_AI2_AO2(int moduleNumber);

    bool isServiceTypeSupported(ServiceType type) override;

    // Unlike the digital module, an unavailable pin and RestartDevice count as taken here, so
    // that registerService refuses them.
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override;
    bool registerService(int pin, ServiceType type) override;
    bool isServiceAvailable(int pin, ServiceType type) override;
    std::string getValidRange(ServiceType type) override;

    unsigned short readAnalog(int pin) override;
    void writeAnalog(int pin, unsigned short value) override;

private:
    static constexpr int nPinCount = 2;

    // The register flag of (pin, type), or null if there is none. Null also for a pin outside
    // the module, so that registerService, which may be asked about any pin, never writes past
    // the flags.
    bool* registerFlag(int pin, ServiceType type);

    [[maybe_unused]] int m_moduleNumber;  // kept as the module was made; not read again
    gds::IOFrameBuffer m_inBuffer;
    gds::IOFrameBuffer m_outBuffer;
    int m_aiOffset[nPinCount];
    int m_aoOffset[nPinCount];
    bool m_aiRegistered[nPinCount];
    bool m_aoRegistered[nPinCount];
};
