// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "modules/AXL_F_AI2_AO2.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "modules/INumberedPinModule.h"

namespace drivertest {

// One module offering both digital and analog pins: the digital module at one bus position and
// the analog module at another, behind the one interface. No real terminal does this; it lets a
// test give one driver inputs of both kinds.
class CombinedModule : public INumberedPinModule {
public:
    CombinedModule(int digitalPosition, int analogPosition);

    bool isServiceTypeSupported(ServiceType type) override;
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override;
    bool registerService(int pin, ServiceType type) override;
    bool isServiceAvailable(int pin, ServiceType type) override;
    std::string getValidRange(ServiceType type) override;

    unsigned char readDigital(int pin) override;
    void writeDigital(int pin, unsigned char value) override;
    unsigned short readAnalog(int pin) override;
    void writeAnalog(int pin, unsigned short value) override;

private:
    INumberedPinModule& moduleFor(ServiceType type);

    AXL_F_DI8_1_DO8_1 digital_;
    AXL_F_AI2_AO2 analog_;
};

}  // namespace drivertest
