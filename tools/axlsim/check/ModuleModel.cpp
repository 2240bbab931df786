// SPDX-License-Identifier: MIT
#include "axlsim/check/ModuleModel.h"

namespace axlsim::configcheck {

namespace {

constexpr std::array<ModuleModel, 2> kModules{{
    {vplc::Module::DI8_DO8, "AXL_F_DI8_1_DO8_1", DigitalIn, DigitalOut, 8, "0 - 7", "DI8", "DO8"},
    {vplc::Module::AI2_AO2, "AXL_F_AI2_AO2", AnalogIn, AnalogOut, 2, "0 - 1", "AI32", "AQ32"},
}};

}  // namespace

const ModuleModel* modelOf(const std::string& deviceType) {
    for (const ModuleModel& model : kModules) {
        if (deviceType == model.deviceType) {
            return &model;
        }
    }
    return nullptr;
}

const ModuleModel& modelOf(vplc::Module module) {
    return module == vplc::Module::DI8_DO8 ? kModules[0] : kModules[1];
}

ServiceType serviceTypeOf(const std::string& text) {
    for (std::size_t i = 0; i < kServiceTexts.size(); ++i) {
        if (text == kServiceTexts[i]) {
            return static_cast<ServiceType>(i);
        }
    }
    return Unsupported;
}

std::string kindName(ServiceType kind) {
    return std::string(kServiceTexts.at(static_cast<std::size_t>(kind)));
}

bool isOutput(ServiceType kind) {
    return kind == DigitalOut || kind == AnalogOut;
}

bool isAnalog(ServiceType kind) {
    return kind == AnalogIn || kind == AnalogOut;
}

bool digitalWriteSetsPin(uint8_t byte, int pin) {
    return (((0U - byte) >> pin) & 1U) != 0;
}

}  // namespace axlsim::configcheck
