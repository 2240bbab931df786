// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "ServiceType.h"
#include "vplc/Module.h"

namespace axlsim::configcheck {

// The texts the driver knows, as it compares them: exactly.
inline constexpr std::array<std::string_view, 5> kServiceTexts{"AnalogIn", "AnalogOut", "DigitalIn",
                                                               "DigitalOut", "RestartDevice"};
inline constexpr std::array<std::string_view, 2> kDeviceTypes{"AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2"};

// The driver's stop message for a service it cannot serve.
inline constexpr const char* kUnsupported = "Unsupported service type.";

// The settings the driver reads.
inline constexpr std::string_view kConsecutiveNumber = "Consecutive Number";
inline constexpr std::string_view kPinNum = "PinNum";
inline constexpr std::string_view kInitVal = "InitVal";

// What the driver knows of a terminal module: its service kinds, pins and ports.
struct ModuleModel {
    vplc::Module module;
    std::string_view deviceType;
    ServiceType input;
    ServiceType output;
    int pins;
    const char* range;
    std::string_view inPort;
    std::string_view outPort;

    bool supports(ServiceType kind) const {
        return kind == input || kind == output || kind == RestartDevice;
    }
};

// The module a "deviceType" names; null for a text the driver does not know.
const ModuleModel* modelOf(const std::string& deviceType);
const ModuleModel& modelOf(vplc::Module module);

// The service kind of a "type" text; Unsupported for a text the driver does not know.
ServiceType serviceTypeOf(const std::string& text);

// "DigitalIn", ...
std::string kindName(ServiceType kind);

bool isOutput(ServiceType kind);
bool isAnalog(ServiceType kind);

// The pin state that writeDigital leaves for a byte that is not 0 or 1: the byte is not
// normalised, the pin takes its bit of the byte's two's-complement negation.
bool digitalWriteSetsPin(uint8_t byte, int pin);

}  // namespace axlsim::configcheck
