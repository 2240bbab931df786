// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace axlsim {

// The example that `axlsim demo` runs, built into the program.
std::string_view demoConfigText();
std::string_view demoConfigName();

}  // namespace axlsim
