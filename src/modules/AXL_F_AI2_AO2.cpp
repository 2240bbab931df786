// SPDX-License-Identifier: MIT
#include "modules/AXL_F_AI2_AO2.h"

#include "LogMessage.h"

namespace {

// Channel 1 is the word after channel 0; without channel 0 there is nothing to count from.
int nextWordOffset(int nOffset) {
    return nOffset == gds::IOFrameBuffer::InvalidOffset ? gds::IOFrameBuffer::InvalidOffset
                                                        : nOffset + 2;
}

}  // namespace

AXL_F_AI2_AO2::AXL_F_AI2_AO2(int moduleNumber)
    : m_moduleNumber(moduleNumber),
      m_inBuffer("1:IN"),
      m_outBuffer("1:OUT"),
      m_aiOffset{},
      m_aoOffset{},
      m_aiRegistered{},
      m_aoRegistered{} {
    m_aiOffset[0] = m_inBuffer.offset(moduleNumber, "AI32");
    m_aiOffset[1] = nextWordOffset(m_aiOffset[0]);
    m_aoOffset[0] = m_outBuffer.offset(moduleNumber, "AQ32");
    m_aoOffset[1] = nextWordOffset(m_aoOffset[0]);
}

bool AXL_F_AI2_AO2::isServiceTypeSupported(ServiceType type) {
    return type == AnalogIn || type == AnalogOut || type == RestartDevice;
}

bool AXL_F_AI2_AO2::isServiceAvailable(int pin, ServiceType type) {
    return isServiceTypeSupported(type) && isPinOnModule(pin, nPinCount);
}

bool AXL_F_AI2_AO2::isServiceAlreadyRegistered(int pin, ServiceType type) {
    if (!isServiceAvailable(pin, type)) {
        logMessage(2, "Service %d not available for AIAO Module", static_cast<int>(type));
        return true;
    }
    const bool* pFlag = registerFlag(pin, type);
    return pFlag == nullptr || *pFlag;
}

bool AXL_F_AI2_AO2::registerService(int pin, ServiceType type) {
    if (isServiceAlreadyRegistered(pin, type)) {
        return false;
    }
    bool* pFlag = registerFlag(pin, type);
    if (pFlag == nullptr) {
        return false;
    }
    *pFlag = true;
    return true;
}

std::string AXL_F_AI2_AO2::getValidRange(ServiceType type) {
    return isServiceTypeSupported(type) ? "0 - 1" : "";
}

unsigned short AXL_F_AI2_AO2::readAnalog(int pin) {
    if (!isPinOnModule(pin, nPinCount)) {
        return 0;
    }
    unsigned char byWord[2] = {};
    m_inBuffer.read(m_aiOffset[pin], byWord, sizeof byWord);
    return static_cast<unsigned short>((byWord[0] << 8) | byWord[1]);
}

void AXL_F_AI2_AO2::writeAnalog(int pin, unsigned short value) {
    if (!isPinOnModule(pin, nPinCount)) {
        return;
    }
    const unsigned char byWord[2] = {static_cast<unsigned char>(value >> 8),
                                     static_cast<unsigned char>(value & 0xFFu)};
    m_outBuffer.write(m_aoOffset[pin], byWord, sizeof byWord);
}

bool* AXL_F_AI2_AO2::registerFlag(int pin, ServiceType type) {
    if (!isPinOnModule(pin, nPinCount)) {
        return nullptr;
    }
    if (type == AnalogIn) {
        return &m_aiRegistered[pin];
    }
    if (type == AnalogOut) {
        return &m_aoRegistered[pin];
    }
    return nullptr;
}
