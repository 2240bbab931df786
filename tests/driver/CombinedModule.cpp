// SPDX-License-Identifier: MIT
#include "CombinedModule.h"

namespace drivertest {

CombinedModule::CombinedModule(int digitalPosition, int analogPosition)
    : digital_(digitalPosition), analog_(analogPosition) {}

bool CombinedModule::isServiceTypeSupported(ServiceType type) {
    return moduleFor(type).isServiceTypeSupported(type);
}

bool CombinedModule::isServiceAlreadyRegistered(int pin, ServiceType type) {
    return moduleFor(type).isServiceAlreadyRegistered(pin, type);
}

bool CombinedModule::registerService(int pin, ServiceType type) {
    return moduleFor(type).registerService(pin, type);
}

bool CombinedModule::isServiceAvailable(int pin, ServiceType type) {
    return moduleFor(type).isServiceAvailable(pin, type);
}

std::string CombinedModule::getValidRange(ServiceType type) {
    return moduleFor(type).getValidRange(type);
}

unsigned char CombinedModule::readDigital(int pin) {
    return digital_.readDigital(pin);
}

void CombinedModule::writeDigital(int pin, unsigned char value) {
    digital_.writeDigital(pin, value);
}

unsigned short CombinedModule::readAnalog(int pin) {
    return analog_.readAnalog(pin);
}

void CombinedModule::writeAnalog(int pin, unsigned short value) {
    analog_.writeAnalog(pin, value);
}

INumberedPinModule& CombinedModule::moduleFor(ServiceType type) {
    if (type == AnalogIn || type == AnalogOut) {
        return analog_;
    }
    return digital_;
}

}  // namespace drivertest
