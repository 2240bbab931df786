// SPDX-License-Identifier: MIT
#include "CombinedModule.h"

#include <string>

#include "modules/AXL_F_AI2_AO2.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"

namespace drivertest {

namespace {

// Known to tests only through the interface, so each call is defined where it is declared.
class CombinedModule final : public INumberedPinModule {
public:
    CombinedModule(int digitalPosition, int analogPosition)
        : digital_(digitalPosition), analog_(analogPosition) {}

    bool isServiceTypeSupported(ServiceType type) override {
        return moduleFor(type).isServiceTypeSupported(type);
    }
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override {
        return moduleFor(type).isServiceAlreadyRegistered(pin, type);
    }
    bool registerService(int pin, ServiceType type) override {
        return moduleFor(type).registerService(pin, type);
    }
    bool isServiceAvailable(int pin, ServiceType type) override {
        return moduleFor(type).isServiceAvailable(pin, type);
    }
    std::string getValidRange(ServiceType type) override {
        return moduleFor(type).getValidRange(type);
    }

    unsigned char readDigital(int pin) override { return digital_.readDigital(pin); }
    void writeDigital(int pin, unsigned char value) override { digital_.writeDigital(pin, value); }
    unsigned short readAnalog(int pin) override { return analog_.readAnalog(pin); }
    void writeAnalog(int pin, unsigned short value) override { analog_.writeAnalog(pin, value); }

private:
    INumberedPinModule& moduleFor(ServiceType type) {
        if (type == AnalogIn || type == AnalogOut) {
            return analog_;
        }
        return digital_;
    }

    AXL_F_DI8_1_DO8_1 digital_;
    AXL_F_AI2_AO2 analog_;
};

}  // namespace

std::unique_ptr<INumberedPinModule> combinedModule(int digitalPosition, int analogPosition) {
    return std::make_unique<CombinedModule>(digitalPosition, analogPosition);
}

}  // namespace drivertest
