// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace axlsim {

// The live page, built into the program so that it needs nothing from elsewhere; its chart and
// style are the report's (tools/axlsim/render/).
std::string livePage();

}  // namespace axlsim
