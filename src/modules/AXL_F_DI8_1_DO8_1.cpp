// SPDX-License-Identifier: MIT
#include "modules/AXL_F_DI8_1_DO8_1.h"

AXL_F_DI8_1_DO8_1::AXL_F_DI8_1_DO8_1(int moduleNumber)
    : m_moduleNumber(moduleNumber),
      m_inBuffer("1:IN"),
      m_outBuffer("1:OUT"),
      m_inOffset(m_inBuffer.offset(moduleNumber, "DI8")),
      m_outOffset(m_outBuffer.offset(moduleNumber, "DO8")),
      m_outputState(0),
      m_diRegistered{},
      m_doRegistered{} {}

bool AXL_F_DI8_1_DO8_1::isServiceTypeSupported(ServiceType type) {
    return type == DigitalIn || type == DigitalOut || type == RestartDevice;
}

bool AXL_F_DI8_1_DO8_1::isServiceAvailable(int pin, ServiceType type) {
    return isServiceTypeSupported(type) && isPinOnModule(pin, nPinCount);
}

bool AXL_F_DI8_1_DO8_1::isServiceAlreadyRegistered(int pin, ServiceType type) {
    if (!isServiceAvailable(pin, type)) {
        return false;
    }
    const bool* pFlag = registerFlag(pin, type);
    return pFlag != nullptr && *pFlag;
}

bool AXL_F_DI8_1_DO8_1::registerService(int pin, ServiceType type) {
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

std::string AXL_F_DI8_1_DO8_1::getValidRange(ServiceType type) {
    return isServiceTypeSupported(type) ? "0 - 7" : "";
}

// Pins outside the module are neither read nor written: a shift by such a pin number would be
// undefined, and registration never hands one out.
unsigned char AXL_F_DI8_1_DO8_1::readDigital(int pin) {
    if (!isPinOnModule(pin, nPinCount)) {
        return 0;
    }
    unsigned char byInputs = 0;
    m_inBuffer.read(m_inOffset, &byInputs, 1);
    return static_cast<unsigned char>((byInputs >> pin) & 1u);
}

void AXL_F_DI8_1_DO8_1::writeDigital(int pin, unsigned char value) {
    if (!isPinOnModule(pin, nPinCount)) {
        return;
    }
    const unsigned nMask = 1u << pin;
    // Set-or-clear without a branch: the pin's bit becomes bit `pin` of the negated value, which
    // is 1 for value 1 and 0 for value 0. The value is deliberately not normalised.
    const unsigned nNegated = 0u - value;
    m_outputState =
        static_cast<unsigned char>(m_outputState ^ ((nNegated ^ m_outputState) & nMask));
    // The remembered state changes before the write, so that a failed write is carried by the
    // next successful one.
    m_outBuffer.write(m_outOffset, &m_outputState, 1);
}

bool* AXL_F_DI8_1_DO8_1::registerFlag(int pin, ServiceType type) {
    if (!isPinOnModule(pin, nPinCount)) {
        return nullptr;
    }
    if (type == DigitalIn) {
        return &m_diRegistered[pin];
    }
    if (type == DigitalOut) {
        return &m_doRegistered[pin];
    }
    return nullptr;
}
