// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace axlsim {

// The report's page, built into the program so that a report needs nothing from elsewhere, with
// "/*AXLSIM_DATA*/" where the run's data goes. Its chart and style are the live page's.
std::string reportPage();

}  // namespace axlsim
