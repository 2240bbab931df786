// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace axlsim {

// The pages built into the program, so that they need nothing from elsewhere: the live page, and
// the report's page, which shares the live page's chart.
class Assets {
public:
    static std::string livePage();
    // The report with "/*AXLSIM_DATA*/" where the run's data goes.
    static std::string reportPage();
};

}  // namespace axlsim
