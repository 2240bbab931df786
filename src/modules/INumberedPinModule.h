// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "ServiceType.h"

// An Axioline F terminal module whose channels are addressed by pin numbers counted from 0.
// Expected use: isServiceAvailable, then isServiceAlreadyRegistered, then registerService, then
// reads and writes of the registered pins.
class INumberedPinModule {
public:
    virtual ~INumberedPinModule() = default;

    // Whether the module offers this service kind at all.
    virtual bool isServiceTypeSupported(ServiceType type) = 0;

    // Whether the pin is taken for this kind.
    virtual bool isServiceAlreadyRegistered(int pin, ServiceType type) = 0;

    // Marks the pin taken for this kind; true if it was newly taken.
    virtual bool registerService(int pin, ServiceType type) = 0;

    // Whether the kind is supported and the pin exists.
    virtual bool isServiceAvailable(int pin, ServiceType type) = 0;

    // The pin range of this kind as text, for messages; empty for a kind the module lacks.
    virtual std::string getValidRange(ServiceType type) = 0;

    // State of a digital input pin, 0 or 1.
    virtual unsigned char readDigital(int) { return 0; }

    virtual void writeDigital(int, unsigned char) {}

    // Raw IB IL word of an analog input channel.
    virtual unsigned short readAnalog(int) { return 0; }

    // Writes the raw IB IL word of an analog output channel.
    virtual void writeAnalog(int, unsigned short) {}

protected:
    // True for the pins 0 to nPinCount - 1; a negative pin, taken as unsigned, is never below.
    static bool isPinOnModule(int pin, int nPinCount) {
        return static_cast<unsigned>(pin) < static_cast<unsigned>(nPinCount);
    }
};
