// SPDX-License-Identifier: MIT
#include "axlsim/configuration/PlcOperationName.h"

#include <array>

namespace axlsim {

namespace {

// Indexed by the operation's value.
constexpr std::array<std::string_view, 9> kNames{
    "None", "Load", "Setup", "StartCold", "StartWarm", "StartHot", "Stop", "Reset", "Unload"};

}  // namespace

std::optional<PlcOperation> plcOperationFromName(std::string_view name) {
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (kNames[i] == name) {
            return static_cast<PlcOperation>(i);
        }
    }
    return std::nullopt;
}

std::string plcOperationName(int operation) {
    if (operation < 0 || static_cast<std::size_t>(operation) >= kNames.size()) {
        return "?";
    }
    return std::string(kNames[static_cast<std::size_t>(operation)]);
}

std::string plcOperationNames() {
    std::string names;
    for (std::string_view name : kNames) {
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    return names;
}

}  // namespace axlsim
