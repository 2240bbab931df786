// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace vplc {

// The Axioline F terminal modules the virtual bus can hold.
enum class Module {
    DI8_DO8,  // AXL F DI8/1 DO8/1: input byte "~DI8", output byte "~DO8"
    AI2_AO2,  // AXL F AI2 AO2: two input words "~AI32", two output words "~AQ32", big-endian
};

// The order designation, as a driver configuration names it ("AXL_F_DI8_1_DO8_1").
std::string_view orderName(Module module);

// The module with this order designation (exact, case-sensitive), if any.
std::optional<Module> moduleFromOrderName(std::string_view name);

}  // namespace vplc
