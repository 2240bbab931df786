// SPDX-License-Identifier: MIT
#include "vplc/Module.h"

namespace vplc {

namespace {

constexpr std::string_view kDigitalOrderName = "AXL_F_DI8_1_DO8_1";
constexpr std::string_view kAnalogOrderName = "AXL_F_AI2_AO2";

}  // namespace

std::string_view orderName(Module module) {
    return module == Module::DI8_DO8 ? kDigitalOrderName : kAnalogOrderName;
}

std::optional<Module> moduleFromOrderName(std::string_view name) {
    if (name == kDigitalOrderName) {
        return Module::DI8_DO8;
    }
    if (name == kAnalogOrderName) {
        return Module::AI2_AO2;
    }
    return std::nullopt;
}

}  // namespace vplc
