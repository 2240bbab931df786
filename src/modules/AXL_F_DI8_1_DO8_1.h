// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "gds/IOFrameBuffer.h"
#include "modules/INumberedPinModule.h"

// AXL F DI8/1 DO8/1: eight digital inputs (one byte, port "DI8") and eight digital outputs (one
// byte, port "DO8"); pin n is bit n of the byte.
class AXL_F_DI8_1_DO8_1 : public INumberedPinModule {
public:
    explicit AXL_F_DI8_1_DO8_1(int moduleNumber);

    bool isServiceTypeSupported(ServiceType type) override;
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override;
    bool registerService(int pin, ServiceType type) override;
    bool isServiceAvailable(int pin, ServiceType type) override;
    std::string getValidRange(ServiceType type) override;

    unsigned char readDigital(int pin) override;

    // Writes the whole output byte: the other seven outputs get the state last commanded here
    // (all off after construction), not what the frame held before.
    void writeDigital(int pin, unsigned char value) override;

private:
    static constexpr int nPinCount = 8;

    // The register flag of (pin, type), or null if there is none. Null also for a pin outside
    // the module, so that registerService, which may be asked about any pin, never writes past
    // the flags.
    bool* registerFlag(int pin, ServiceType type);

    [[maybe_unused]] int m_moduleNumber;  // kept as the module was made; not read again
    gds::IOFrameBuffer m_inBuffer;
    gds::IOFrameBuffer m_outBuffer;
    int m_inOffset;
    int m_outOffset;
    unsigned char m_outputState;
    bool m_diRegistered[nPinCount];
    bool m_doRegistered[nPinCount];
};
